#include "testing/KVRTemporaryStore.h"

#include <kovra/KVRDirectories.h>

#include "Persistence/KVRPersistenceController.h"
#include "testing/KVRTestEnvironment.h"

KVRTemporaryStore::KVRTemporaryStore() {
    KVRPersistenceController::sharedController().closeStore();
    KVRDirectories::setDataDirectory(directory_.path());
}

KVRTemporaryStore::~KVRTemporaryStore() {
    KVRPersistenceController::sharedController().closeStore();
    KVRDirectories::setDataDirectory(kovraTestDataDirectory());
}

std::string KVRTemporaryStore::storeDirectory() const {
    return directory_.path() + "/Library/" + KVRPersistenceController::kLibraryBundleIdentifier;
}

std::string KVRTemporaryStore::storePath() const {
    return storeDirectory() + "/" + KVRPersistenceController::kStoreFileName;
}

void KVRTemporaryStore::reopen() { KVRPersistenceController::sharedController().closeStore(); }
