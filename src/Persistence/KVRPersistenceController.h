#pragma once

#include "Persistence/KVRManagedObjectContext.h"
#include "Persistence/KVRManagedObjectModel.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Owns the object store: the model, the SQLite file "KovraSDK.sqlite" in the
/// store directory, and the one context every record lives in. The store is
/// opened on first use; when it cannot be opened the failure is logged and the
/// library goes on without one (finds are empty, saves keep nothing).
class KVRPersistenceController {
public:
    static constexpr const char* kLibraryBundleIdentifier = "br.com.kovra.KovraSDK";
    static constexpr const char* kStoreFileName = "KovraSDK.sqlite";

    static KVRPersistenceController& sharedController();

    /// The store directory: the Library directory plus the library's bundle
    /// identifier, created with its parents when missing.
    std::string applicationDocumentsDirectory() const;
    const KVRManagedObjectModel& managedObjectModel() const { return KVRManagedObjectModel::sharedModel(); }
    /// The one context, opening the store on first use.
    std::shared_ptr<KVRManagedObjectContext> managedObjectContext();
    /// Saves the context when it has changes; a failure is logged.
    void saveContext();

    /// What went wrong when the store was opened: no store could be used, or
    /// an unreadable one was moved aside. Opens the store first.
    std::optional<std::string> storeProblem();
    /// Unreadable stores moved aside beside this one, oldest first.
    std::vector<std::string> setAsideStores() const;
    std::string storePath() const;
    /// Checkpoints and closes the store (records of it become detached); the
    /// next use opens it again, where KVRDirectories points then. At process
    /// exit this runs by itself and the store is not opened again.
    void closeStore();

private:
    KVRPersistenceController() = default;
    std::unique_ptr<KVRPersistentStore> openStore();

    std::shared_ptr<KVRManagedObjectContext> context_;
    std::optional<std::string> problem_;
    bool exiting_ = false;
};
