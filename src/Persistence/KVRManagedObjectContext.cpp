#include "Persistence/KVRManagedObjectContext.h"

#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>

#include "Persistence/KVREntityDescription.h"
#include "Persistence/KVRManagedObjectModel.h"

#include <algorithm>

namespace {
constexpr size_t kMinimumSweepSize = 64;
constexpr long kNoStoreCode = 9999;
}

KVRManagedObjectContext::KVRManagedObjectContext(std::unique_ptr<KVRPersistentStore> store) : store_(std::move(store)) {}

std::recursive_mutex& KVRManagedObjectContext::mutex() {
    static auto* lock = new std::recursive_mutex();
    return *lock;
}

bool KVRManagedObjectContext::owns(const KVRManagedObject& object) const {
    const auto& state = stateOf(object);
    if (state.context.lock().get() != this) return false;
    return state.status == KVRObjectStatus::Inserted || state.status == KVRObjectStatus::Clean ||
           state.status == KVRObjectStatus::Updated;
}

KVRManagedObjectContext::ObjectPointer KVRManagedObjectContext::insertNewObject(const KVREntityDescription& entity) {
    auto object = entity.makeObject();
    if (!store_) return object;
    auto& state = stateOf(*object);
    state.context = weak_from_this();
    state.status = KVRObjectStatus::Inserted;
    inserted_.push_back(object);
    return object;
}

std::vector<KVRManagedObjectContext::ObjectPointer> KVRManagedObjectContext::fetch(const KVREntityDescription& entity,
                                                                                  const KVRFetchCondition* condition) {
    if (!store_) return {};
    auto rows = selectRows(entity, condition);
    if (!rows) {
        KVRLoggingUtil::console("Problem! " + store_->lastError().description());
        return {};
    }
    // Stored rows count as they are unless this context changed them: changed
    // records are judged by their values in memory, new ones come last.
    std::vector<std::pair<std::int64_t, ObjectPointer>> found;
    for (auto& row : *rows) {
        auto object = objectForRow(entity, std::move(row));
        if (stateOf(*object).status == KVRObjectStatus::Clean) found.emplace_back(stateOf(*object).rowId, object);
    }
    for (const auto& object : updated_) {
        if (matches(*object, entity, condition)) found.emplace_back(stateOf(*object).rowId, object);
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });

    std::vector<ObjectPointer> result;
    result.reserve(found.size());
    for (auto& [id, object] : found) result.push_back(std::move(object));
    for (const auto& object : inserted_) {
        if (matches(*object, entity, condition)) result.push_back(object);
    }
    return result;
}

long long KVRManagedObjectContext::count(const KVREntityDescription& entity) {
    if (!store_) return 0;
    auto stored = store_->countRows(entity);
    if (!stored) {
        KVRLoggingUtil::console("Problem! " + store_->lastError().description());
        return 0;
    }
    // Deleted records are still rows until the next save; new ones are not yet.
    long long total = *stored;
    for (const auto& object : deleted_)
        if (matches(*object, entity, nullptr)) --total;
    for (const auto& object : inserted_)
        if (matches(*object, entity, nullptr)) ++total;
    return total;
}

std::optional<std::vector<KVRStoredRow>> KVRManagedObjectContext::selectRows(const KVREntityDescription& entity,
                                                                            const KVRFetchCondition* condition) {
    if (!condition) return store_->selectRows(entity, nullptr);
    if (!condition->relationship) {
        KVRRowCondition rowCondition{entity.attributes()[*condition->index].name, condition->value};
        return store_->selectRows(entity, &rowCondition);
    }
    // Only a record of this context that has been written can be pointed at
    // by stored rows.
    const auto& target = *condition->object;
    if (stateOf(target).context.lock().get() != this || stateOf(target).rowId == 0) return std::vector<KVRStoredRow>();
    KVRRowCondition rowCondition{condition->relationship->name, KVRNumber(static_cast<long long>(stateOf(target).rowId))};
    return store_->selectRows(entity, &rowCondition);
}

bool KVRManagedObjectContext::matches(const KVRManagedObject& object, const KVREntityDescription& entity,
                                      const KVRFetchCondition* condition) const {
    const auto& state = stateOf(object);
    if (!state.entity->isKindOf(entity)) return false;
    if (!condition) return true;
    if (!condition->relationship) return state.values[*condition->index] == condition->value;
    const auto& link = state.links[*condition->index];
    if (link.object) return link.object == condition->object;
    const auto& target = stateOf(*condition->object);
    return link.rowId != 0 && link.rowId == target.rowId && target.context.lock().get() == this;
}

KVRManagedObjectContext::ObjectPointer KVRManagedObjectContext::registeredObject(const RowKey& key) {
    auto it = registered_.find(key);
    if (it == registered_.end()) return nullptr;
    auto object = it->second.lock();
    if (!object) registered_.erase(it);
    return object;
}

KVRManagedObjectContext::ObjectPointer KVRManagedObjectContext::objectForRow(const KVREntityDescription& fetched,
                                                                            KVRStoredRow&& row) {
    RowKey key{fetched.tableName(), row.id};
    if (auto object = registeredObject(key)) return object;

    const auto* entity = KVRManagedObjectModel::sharedModel().entityNamed(row.entity);
    if (!entity || &entity->root() != &fetched.root()) entity = &fetched.root();
    auto object = entity->makeObject();
    auto& state = stateOf(*object);
    state.context = weak_from_this();
    state.status = KVRObjectStatus::Clean;
    state.rowId = row.id;
    state.values = std::move(row.values);
    for (size_t i = 0; i < state.links.size() && i < row.links.size(); ++i) state.links[i].rowId = row.links[i];

    if (registered_.size() >= sweepThreshold_) {
        std::erase_if(registered_, [](const auto& entry) { return entry.second.expired(); });
        sweepThreshold_ = std::max(kMinimumSweepSize, registered_.size() * 2);
    }
    registered_[key] = object;
    return object;
}

KVRManagedObjectContext::ObjectPointer KVRManagedObjectContext::followLink(const KVRRelationshipDescription& relationship,
                                                                          KVRObjectLink& link) {
    if (link.object) return link.object;
    if (link.rowId == 0 || !store_) return nullptr;
    const auto& destination = relationship.destination().root();
    auto object = registeredObject({destination.tableName(), link.rowId});
    if (!object) {
        bool failed = false;
        auto row = store_->selectRow(destination, link.rowId, failed);
        if (failed) KVRLoggingUtil::console("Problem! " + store_->lastError().description());
        if (!row) return nullptr;
        object = objectForRow(destination, std::move(*row));
    }
    link.object = object;
    return object;
}

void KVRManagedObjectContext::deleteObject(const ObjectPointer& object) {
    if (!owns(*object)) return;
    applyDeleteRules(object);
    auto& state = stateOf(*object);
    if (state.status == KVRObjectStatus::Inserted) {
        remove(inserted_, *object);
        state.status = KVRObjectStatus::Detached;
        state.context.reset();
        return;
    }
    remove(updated_, *object);
    state.status = KVRObjectStatus::Deleted;
    deleted_.push_back(object);
}

// The records pointing at a deleted one lose their link, or are deleted with
// it when they belong to it.
void KVRManagedObjectContext::applyDeleteRules(const ObjectPointer& object) {
    for (const auto& relationship : stateOf(*object).entity->relationships()) {
        if (relationship.isForeignKey()) continue;
        const auto& destination = relationship.destination();
        KVRFetchCondition condition{destination.relationship(relationship.inverseName),
                                    destination.foreignKeyIndex(relationship.inverseName), {}, object};
        for (const auto& other : fetch(destination, &condition)) {
            if (relationship.deleteRule == KVRDeleteRule::Cascade) {
                deleteObject(other);
            } else {
                stateOf(*other).links[*condition.index] = KVRObjectLink();
                objectDidChange(*other);
            }
        }
    }
}

void KVRManagedObjectContext::objectDidChange(KVRManagedObject& object) {
    if (!owns(object)) return;
    auto& state = stateOf(object);
    if (state.status != KVRObjectStatus::Clean) return;
    state.status = KVRObjectStatus::Updated;
    updated_.push_back(object.shared_from_this());
}

std::optional<KVRError> KVRManagedObjectContext::save(const std::function<bool(KVRPersistentStore&)>& alsoWrite) {
    if (!store_) {
        if (!alsoWrite) return std::nullopt;
        return KVRError(KovraDomain, kNoStoreCode, {{NSLocalizedDescriptionKey, "There is no store to write to."}});
    }
    if (!hasChanges() && !alsoWrite) return std::nullopt;
    std::map<const KVRManagedObject*, std::int64_t> newIds;
    if (!store_->beginTransaction()) return store_->lastError();
    if (!writeChanges(newIds) || (alsoWrite && !alsoWrite(*store_)) || !store_->commitTransaction()) {
        KVRError error = store_->lastError();
        store_->rollbackTransaction();
        return error;
    }
    didSave(newIds);
    return std::nullopt;
}

std::optional<KVRError> KVRManagedObjectContext::saveOnly(const std::vector<ObjectPointer>& objects,
                                                         const std::function<bool(KVRPersistentStore&)>& alsoWrite) {
    auto chosen = [&objects](const ObjectPointer& object) {
        return std::find(objects.begin(), objects.end(), object) != objects.end();
    };
    std::vector<ObjectPointer> others[3];
    std::vector<ObjectPointer>* lists[3] = {&inserted_, &updated_, &deleted_};
    for (int i = 0; i < 3; ++i) {
        auto split = std::stable_partition(lists[i]->begin(), lists[i]->end(), chosen);
        others[i].assign(split, lists[i]->end());
        lists[i]->erase(split, lists[i]->end());
    }
    auto error = save(alsoWrite);
    for (int i = 0; i < 3; ++i) lists[i]->insert(lists[i]->end(), others[i].begin(), others[i].end());
    return error;
}

// New rows are made first so that links between new records can name them.
bool KVRManagedObjectContext::writeChanges(std::map<const KVRManagedObject*, std::int64_t>& newIds) {
    for (const auto& object : inserted_) {
        auto id = store_->insertRow(*stateOf(*object).entity);
        if (!id) return false;
        newIds[object.get()] = *id;
    }
    auto write = [&](const ObjectPointer& object, std::int64_t id) {
        const auto& state = stateOf(*object);
        std::vector<std::optional<std::int64_t>> links;
        for (const auto& link : state.links) {
            if (link.object) links.push_back(rowIdOf(link.object, newIds));
            else links.push_back(link.rowId ? std::optional<std::int64_t>(link.rowId) : std::nullopt);
        }
        return store_->updateRow(*state.entity, id, state.values, links);
    };
    for (const auto& object : inserted_) {
        if (!write(object, newIds[object.get()])) return false;
    }
    for (const auto& object : updated_) {
        if (!write(object, stateOf(*object).rowId)) return false;
    }
    for (const auto& object : deleted_) {
        if (!store_->deleteRow(*stateOf(*object).entity, stateOf(*object).rowId)) return false;
    }
    return true;
}

std::optional<std::int64_t> KVRManagedObjectContext::rowIdOf(
    const ObjectPointer& object, const std::map<const KVRManagedObject*, std::int64_t>& newIds) const {
    if (!owns(*object)) return std::nullopt;
    if (stateOf(*object).rowId) return stateOf(*object).rowId;
    auto it = newIds.find(object.get());
    if (it == newIds.end()) return std::nullopt;
    return it->second;
}

void KVRManagedObjectContext::didSave(const std::map<const KVRManagedObject*, std::int64_t>& newIds) {
    for (const auto& object : inserted_) {
        auto& state = stateOf(*object);
        state.rowId = newIds.at(object.get());
        state.status = KVRObjectStatus::Clean;
        registered_[{state.entity->tableName(), state.rowId}] = object;
    }
    for (const auto& object : updated_) stateOf(*object).status = KVRObjectStatus::Clean;
    for (const auto& object : deleted_) {
        auto& state = stateOf(*object);
        registered_.erase({state.entity->tableName(), state.rowId});
        state.status = KVRObjectStatus::Detached;
        state.rowId = 0;
        state.context.reset();
    }
    inserted_.clear();
    updated_.clear();
    deleted_.clear();
}

void KVRManagedObjectContext::remove(std::vector<ObjectPointer>& list, const KVRManagedObject& object) {
    std::erase_if(list, [&object](const ObjectPointer& candidate) { return candidate.get() == &object; });
}
