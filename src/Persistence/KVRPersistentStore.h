#pragma once

#include <kovra/KVRError.h>

#include "Persistence/KVRManagedObjectModel.h"
#include "Persistence/KVRStoredValue.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;

/// One stored row: its id, the record type that made it, its attribute values
/// (in the entity's attribute order) and its links (row ids, 0 for none).
struct KVRStoredRow {
    std::int64_t id = 0;
    std::string entity;
    std::vector<KVRStoredValue> values;
    std::vector<std::int64_t> links;
};

/// Selects the rows whose column equals the value.
struct KVRRowCondition {
    std::string column;
    KVRStoredValue value;
};

/// The SQLite file behind the object store: one table per record type, WAL
/// journal, every commit synced to disk before it returns.
class KVRPersistentStore {
public:
    /// Opens the store at `path`, making it when missing and bringing an older
    /// one up to date. A file that is not a readable SQLite database is moved
    /// aside (its name gets a time stamp) and a new store is made. A store of a
    /// newer version is left untouched. Null, with `error` set, when there is
    /// no store to use.
    static std::unique_ptr<KVRPersistentStore> open(const std::string& path, const KVRManagedObjectModel& model,
                                                    KVRError& error);
    ~KVRPersistentStore();
    KVRPersistentStore(const KVRPersistentStore&) = delete;
    KVRPersistentStore& operator=(const KVRPersistentStore&) = delete;

    /// Rows of the entity and of the entities that specialise it, by id.
    std::optional<std::vector<KVRStoredRow>> selectRows(const KVREntityDescription& entity,
                                                        const KVRRowCondition* condition);
    std::optional<KVRStoredRow> selectRow(const KVREntityDescription& root, std::int64_t id, bool& failed);
    /// How many rows the entity and its specialisations have, without reading them.
    std::optional<long long> countRows(const KVREntityDescription& entity);

    bool beginTransaction();
    bool commitTransaction();
    void rollbackTransaction();
    std::optional<std::int64_t> insertRow(const KVREntityDescription& entity);
    bool updateRow(const KVREntityDescription& entity, std::int64_t id, const std::vector<KVRStoredValue>& values,
                   const std::vector<std::optional<std::int64_t>>& links);
    bool deleteRow(const KVREntityDescription& entity, std::int64_t id);

    /// The last SQLite failure as an error value.
    KVRError lastError() const;
    /// Where the unreadable file found at open was moved; empty when none was.
    const std::string& setAsidePath() const { return setAsidePath_; }
    /// The open database, for tables kept beside the record types' (the journal).
    sqlite3* database() const { return db_; }
    /// Copies the write-ahead log into the database file and closes it, so
    /// that the file alone holds everything.
    void checkpointAndClose();

private:
    enum class OpenResult { Opened, Unreadable, Newer, Failed };

    KVRPersistentStore(std::string path, const KVRManagedObjectModel& model);
    OpenResult openFile(KVRError& error);
    OpenResult inspect(KVRError& error);
    OpenResult checkIntegrity(KVRError& error);
    std::optional<KVRError> configureAndMigrate();
    bool switchToWriteAheadLog();
    std::optional<int> readVersion(int& code);
    bool moveAside(const KVRError& reason);
    void close();
    KVRError sqliteError(int code) const;

    std::string path_;
    std::string setAsidePath_;
    const KVRManagedObjectModel& model_;
    sqlite3* db_ = nullptr;
};
