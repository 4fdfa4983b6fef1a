import pytest

from kovra_emulators import Emulators


@pytest.fixture(scope="session")
def emulators():
    with Emulators() as running:
        yield running


@pytest.fixture(scope="session")
def kovra(emulators):
    import kovra as package

    package.load_config(emulators.info_file)
    package.set_data_directory(emulators.data_directory)
    return package
