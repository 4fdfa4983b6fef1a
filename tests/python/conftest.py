import pytest

from kovra_emulators import Emulators

# The third card read is held for ten seconds, for test_merchant_day to abort it.
FAULTS = [{"command": "GCR", "nth": 3, "delay_ms": 10000}]


@pytest.fixture(scope="session")
def emulators():
    with Emulators(FAULTS) as running:
        yield running


@pytest.fixture(scope="session")
def kovra(emulators):
    import kovra as package

    package.load_config(emulators.info_file)
    package.set_data_directory(emulators.data_directory)
    return package
