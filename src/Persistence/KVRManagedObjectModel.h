#pragma once

#include "Persistence/KVREntityDescription.h"

#include <string>
#include <vector>

/// The record types of the store ("KovraSDK") and the version of the tables
/// that hold them.
class KVRManagedObjectModel {
public:
    /// Raised whenever a table or column is added; a store of a higher
    /// version is refused rather than changed.
    static constexpr int kSchemaVersion = 2;

    static const KVRManagedObjectModel& sharedModel();

    const std::string& name() const { return name_; }
    const std::vector<const KVREntityDescription*>& entities() const { return entities_; }
    /// The entities that own a table (those that specialise no other).
    std::vector<const KVREntityDescription*> rootEntities() const;
    const KVREntityDescription* entityNamed(const std::string& name) const;
    /// The entity and every entity that specialises it.
    std::vector<const KVREntityDescription*> entitiesKindOf(const KVREntityDescription& entity) const;

private:
    KVRManagedObjectModel();

    std::string name_;
    std::vector<const KVREntityDescription*> entities_;
};
