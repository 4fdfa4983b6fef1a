#pragma once

#include <kovra/KVRError.h>
#include <kovra/KVRManagedObject.h>

#include "Persistence/KVRManagedObjectState.h"
#include "Persistence/KVRPersistentStore.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What a fetch asks for: an attribute equal to a value, or a link to a record.
struct KVRFetchCondition {
    const KVRRelationshipDescription* relationship = nullptr;  // set for a link
    std::optional<size_t> index;                                // attribute or foreign-key index
    KVRStoredValue value;                                       // for an attribute
    std::shared_ptr<KVRManagedObject> object;                   // for a link
};

/// The one object context of the store. It keeps one live object per stored
/// row, the records created, changed and deleted since the last save, and
/// answers fetches from the store merged with those pending changes, so a
/// fetch sees the context as it would be after a save.
///
/// Every member must be called with mutex() held.
class KVRManagedObjectContext : public std::enable_shared_from_this<KVRManagedObjectContext> {
public:
    using ObjectPointer = std::shared_ptr<KVRManagedObject>;

    /// Without a store the context keeps nothing: created records are
    /// detached and fetches are empty.
    explicit KVRManagedObjectContext(std::unique_ptr<KVRPersistentStore> store);

    /// The store's lock: one for the process, taken by every record operation.
    static std::recursive_mutex& mutex();

    bool hasStore() const { return store_ != nullptr; }
    bool hasChanges() const { return !inserted_.empty() || !updated_.empty() || !deleted_.empty(); }

    ObjectPointer insertNewObject(const KVREntityDescription& entity);
    /// Empty (and logged) when the store cannot be read.
    std::vector<ObjectPointer> fetch(const KVREntityDescription& entity, const KVRFetchCondition* condition);
    /// What fetch without a condition would return, counted without loading the rows.
    long long count(const KVREntityDescription& entity);
    /// The record a link leads to, read from the store the first time.
    ObjectPointer followLink(const KVRRelationshipDescription& relationship, KVRObjectLink& link);
    /// Marks the record deleted and applies the delete rules to the records
    /// that point at it. Written by the next save.
    void deleteObject(const ObjectPointer& object);
    void objectDidChange(KVRManagedObject& object);
    /// Writes every pending change in one transaction, together with what
    /// `alsoWrite` writes (it returns false on failure). On failure nothing is
    /// written and the changes stay pending.
    std::optional<KVRError> save(const std::function<bool(KVRPersistentStore&)>& alsoWrite = {});
    /// As save, but only the changes of `objects` (stored records whose
    /// links lead to stored records); every other change stays pending.
    std::optional<KVRError> saveOnly(const std::vector<ObjectPointer>& objects,
                                     const std::function<bool(KVRPersistentStore&)>& alsoWrite);
    /// The store behind the context; null without one.
    KVRPersistentStore* store() const { return store_.get(); }

    /// Whether the record belongs to this context and is not deleted.
    bool owns(const KVRManagedObject& object) const;

private:
    using RowKey = std::pair<std::string, std::int64_t>;

    static KVRManagedObjectState& stateOf(const KVRManagedObject& object) { return object.state(); }
    ObjectPointer registeredObject(const RowKey& key);
    ObjectPointer objectForRow(const KVREntityDescription& fetched, KVRStoredRow&& row);
    std::optional<std::vector<KVRStoredRow>> selectRows(const KVREntityDescription& entity,
                                                        const KVRFetchCondition* condition);
    bool matches(const KVRManagedObject& object, const KVREntityDescription& entity,
                 const KVRFetchCondition* condition) const;
    void applyDeleteRules(const ObjectPointer& object);
    std::optional<std::int64_t> rowIdOf(const ObjectPointer& object,
                                        const std::map<const KVRManagedObject*, std::int64_t>& newIds) const;
    bool writeChanges(std::map<const KVRManagedObject*, std::int64_t>& newIds);
    void didSave(const std::map<const KVRManagedObject*, std::int64_t>& newIds);
    static void remove(std::vector<ObjectPointer>& list, const KVRManagedObject& object);

    std::unique_ptr<KVRPersistentStore> store_;
    std::map<RowKey, std::weak_ptr<KVRManagedObject>> registered_;
    std::vector<ObjectPointer> inserted_;
    std::vector<ObjectPointer> updated_;
    std::vector<ObjectPointer> deleted_;
    size_t sweepThreshold_ = 64;
};
