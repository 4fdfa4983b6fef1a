import pytest

from kovra_emulators import Emulators

# The third card read is answered "cancelled by user" (the third sale of test_merchant_day).
FAULTS = [{"command": "GCR", "nth": 3, "status": 13}]


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
