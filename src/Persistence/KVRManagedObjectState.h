#pragma once

#include "Persistence/KVRStoredValue.h"

#include <cstdint>
#include <memory>
#include <vector>

class KVREntityDescription;
class KVRManagedObject;
class KVRManagedObjectContext;

/// Where a record stands with its context.
enum class KVRObjectStatus {
    Inserted,  // created, not written yet
    Clean,     // as stored
    Updated,   // stored, with changes not written yet
    Deleted,   // stored, removal not written yet
    Detached   // not kept by any context (deleted and saved, or made without a store)
};

/// The other end of a relationship kept on this side. A link read from the
/// store knows only the row id until it is first followed.
struct KVRObjectLink {
    std::shared_ptr<KVRManagedObject> object;
    std::int64_t rowId = 0;

    bool isEmpty() const { return !object && rowId == 0; }
};

/// The data behind a record; only the context and the record itself use it.
struct KVRManagedObjectState {
    const KVREntityDescription* entity = nullptr;
    std::weak_ptr<KVRManagedObjectContext> context;
    KVRObjectStatus status = KVRObjectStatus::Detached;
    std::int64_t rowId = 0;
    std::vector<KVRStoredValue> values;  // by attribute index
    std::vector<KVRObjectLink> links;    // by foreign-key index
};
