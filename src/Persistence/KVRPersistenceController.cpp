#include "Persistence/KVRPersistenceController.h"

#include <kovra/KVRDirectories.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>

#include <algorithm>
#include <cstdlib>
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
    static auto* controller = [] {
        auto* made = new KVRPersistenceController();
        // After a clean exit the database file alone holds the data.
        std::atexit([] {
            auto& shared = sharedController();
            std::lock_guard lock(KVRManagedObjectContext::mutex());
            shared.closeStore();
            shared.exiting_ = true;
        });
        return made;
    }();
    return *controller;
}

std::string KVRPersistenceController::applicationDocumentsDirectory() const {
    std::string library = KVRDirectories::libraryDirectory();
    if (library.empty()) return {};  // the reason is logged already
    std::string path = library + "/" + kLibraryBundleIdentifier;
    std::error_code ec;
    if (fs::exists(path, ec)) {
        if (!fs::is_directory(path, ec)) KVRLoggingUtil::console("Path " + path + " exists but is no directory");
        else fs::permissions(path, fs::perms::owner_all, fs::perm_options::replace, ec);
        return path;
    }
    fs::create_directories(path, ec);
    if (ec) KVRLoggingUtil::console("Can't create directory " + path + " [" + ec.message() + "]");
    else fs::permissions(path, fs::perms::owner_all, fs::perm_options::replace, ec);
    return path;
}

std::shared_ptr<KVRManagedObjectContext> KVRPersistenceController::managedObjectContext() {
    std::lock_guard lock(KVRManagedObjectContext::mutex());
    if (!context_) context_ = std::make_shared<KVRManagedObjectContext>(exiting_ ? nullptr : openStore());
    return context_;
}

std::string KVRPersistenceController::storePath() const {
    return KVRDirectories::libraryDirectory() + "/" + kLibraryBundleIdentifier + "/" + kStoreFileName;
}

std::optional<std::string> KVRPersistenceController::storeProblem() {
    std::lock_guard lock(KVRManagedObjectContext::mutex());
    managedObjectContext();
    return problem_;
}

std::vector<std::string> KVRPersistenceController::setAsideStores() const {
    std::vector<std::string> found;
    std::string prefix = std::string(kStoreFileName) + ".corrupt-";
    std::error_code ec;
    for (const auto& item : fs::directory_iterator(fs::path(storePath()).parent_path(), ec)) {
        std::string name = item.path().filename().string();
        if (name.rfind(prefix, 0) == 0 && name.find("-wal") == std::string::npos && name.find("-shm") == std::string::npos)
            found.push_back(item.path().string());
    }
    std::sort(found.begin(), found.end());
    return found;
}

void KVRPersistenceController::closeStore() {
    std::lock_guard lock(KVRManagedObjectContext::mutex());
    if (context_ && context_->store()) context_->store()->checkpointAndClose();
    context_.reset();
}

std::unique_ptr<KVRPersistentStore> KVRPersistenceController::openStore() {
    problem_.reset();
    std::string directory = applicationDocumentsDirectory();
    KVRError storeError(NSCocoaErrorDomain, kNoDirectoryCode, {{NSLocalizedDescriptionKey, "No store directory."}});
    if (!directory.empty()) {
        auto store = KVRPersistentStore::open(directory + "/" + kStoreFileName, managedObjectModel(), storeError);
        if (store && !store->setAsidePath().empty()) {
            problem_ = "the store could not be read and was moved to " + store->setAsidePath() +
                       "; a new, empty store was made";
        }
        if (store) return store;
    }
    problem_ = "no store could be opened: " + storeError.localizedDescription();
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
