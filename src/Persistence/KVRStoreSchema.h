#pragma once

#include "Persistence/KVRManagedObjectModel.h"

#include <string>

struct sqlite3;

/// The tables of the record types. Bringing a store up to date only adds:
/// missing tables, columns and indexes are created, nothing is dropped, so an
/// older store keeps its rows.
class KVRStoreSchema {
public:
    explicit KVRStoreSchema(const KVRManagedObjectModel& model) : model_(model) {}

    /// Creates or completes every table and records the model's version.
    /// Runs inside the caller's transaction; false on the first failure.
    bool apply(sqlite3* db) const;

    static std::string quoted(const std::string& identifier);
    static std::string columnType(KVRAttributeType type);

private:
    bool applyTable(sqlite3* db, const KVREntityDescription& root) const;
    static bool addMissingColumns(sqlite3* db, const KVREntityDescription& root);
    static bool createIndexes(sqlite3* db, const KVREntityDescription& root);

    const KVRManagedObjectModel& model_;
};
