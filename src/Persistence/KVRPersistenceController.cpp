#include "Persistence/KVRPersistenceController.h"

#include <kovra/KVRDirectories.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr long kStoreErrorCode = 9999;
constexpr const char* NSCocoaErrorDomain = "NSCocoaErrorDomain";
constexpr long kNoDirectoryCode = 4;  // no such file

void logUnresolved(const KVRError& error) {
    KVRLoggingUtil::console("Unresolved error " + error.description() + ", " +
                            KVRError::describeUserInfo(error.userInfo()));
}

}  // namespace

KVRPersistenceController& KVRPersistenceController::sharedController() {
    static auto* controller = new KVRPersistenceController();
    return *controller;
}

std::string KVRPersistenceController::applicationDocumentsDirectory() const {
    std::string library = KVRDirectories::libraryDirectory();
    if (library.empty()) return {};  // the reason is logged already
    std::string path = library + "/" + kLibraryBundleIdentifier;
    std::error_code ec;
    if (fs::exists(path, ec)) {
        if (!fs::is_directory(path, ec)) KVRLoggingUtil::console("Path " + path + " exists but is no directory");
        return path;
    }
    fs::create_directories(path, ec);
    if (ec) KVRLoggingUtil::console("Can't create directory " + path + " [" + ec.message() + "]");
    return path;
}

std::shared_ptr<KVRManagedObjectContext> KVRPersistenceController::managedObjectContext() {
    std::lock_guard lock(KVRManagedObjectContext::mutex());
    if (!context_) context_ = std::make_shared<KVRManagedObjectContext>(openStore());
    return context_;
}

std::unique_ptr<KVRPersistentStore> KVRPersistenceController::openStore() const {
    std::string directory = applicationDocumentsDirectory();
    KVRError storeError(NSCocoaErrorDomain, kNoDirectoryCode, {{NSLocalizedDescriptionKey, "No store directory."}});
    if (!directory.empty()) {
        auto store = KVRPersistentStore::open(directory + "/" + kStoreFileName, managedObjectModel(), storeError);
        if (store) return store;
    }
    logUnresolved(KVRError(KovraDomain, kStoreErrorCode,
                           {{NSLocalizedDescriptionKey, "Failed to initialize the application's saved data"},
                            {NSLocalizedFailureReasonErrorKey,
                             "There was an error creating or loading the application's saved data."},
                            {NSUnderlyingErrorKey, storeError.description()}}));
    return nullptr;
}

void KVRPersistenceController::saveContext() {
    std::lock_guard lock(KVRManagedObjectContext::mutex());
    auto context = managedObjectContext();
    if (!context->hasChanges()) return;
    if (auto error = context->save()) logUnresolved(*error);
}

void KVRPersistenceController::resetSharedControllerForTesting() {
    std::lock_guard lock(KVRManagedObjectContext::mutex());
    sharedController().context_.reset();
}
