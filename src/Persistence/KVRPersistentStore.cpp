#include "Persistence/KVRPersistentStore.h"

#include <kovra/KVRLoggingUtil.h>

#include "Persistence/KVRSQLiteStatement.h"
#include "Persistence/KVRStoreSchema.h"
#include "Utils/KVRClock.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

#include <sqlite3.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

constexpr const char* kSQLiteErrorDomain = "NSSQLiteErrorDomain";
constexpr int kBusyTimeoutMilliseconds = 5000;

bool isUnreadable(int code) {
    int primary = code & 0xff;
    return primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT;
}

bool run(sqlite3* db, const char* sql) { return sqlite3_exec(db, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }

std::string selectList(const KVREntityDescription& entity) {
    std::string columns = "\"id\", \"entity\"";
    for (const auto& attribute : entity.attributes()) columns += ", " + KVRStoreSchema::quoted(attribute.name);
    for (const auto* key : entity.foreignKeys()) columns += ", " + KVRStoreSchema::quoted(key->name);
    return columns;
}

KVRStoredRow readRow(const KVRSQLiteStatement& statement, const KVREntityDescription& entity) {
    KVRStoredRow row;
    row.id = statement.columnInt64(0);
    row.entity = statement.columnText(1);
    int column = 2;
    for (const auto& attribute : entity.attributes()) row.values.push_back(statement.columnValue(column++, attribute.type));
    for (size_t i = 0; i < entity.foreignKeys().size(); ++i) row.links.push_back(statement.columnInt64(column++));
    return row;
}

// Card data and the merchant's keys are for this user alone. SQLite gives the
// log and shared-memory files the database file's mode, so setting it before
// the first write covers them as they are made.
void restrictToOwner(const std::string& path) {
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::error_code ec;
        if (!fs::exists(path + suffix, ec)) continue;
        fs::permissions(path + suffix, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::replace, ec);
        if (ec) KVRLoggingUtil::console("Can't restrict " + path + suffix + " to its owner [" + ec.message() + "]");
    }
}

std::string uniqueAsidePath(const std::string& path) {
    std::string stamp = KVRDateUtil::dateStringWithFormat("yyyyMMdd-HHmmss", KVRClock::now());
    std::string candidate = path + ".corrupt-" + stamp;
    std::error_code ec;
    for (int n = 2; fs::exists(candidate, ec); ++n) candidate = path + ".corrupt-" + stamp + "-" + std::to_string(n);
    return candidate;
}

}  // namespace

KVRPersistentStore::KVRPersistentStore(std::string path, const KVRManagedObjectModel& model)
    : path_(std::move(path)), model_(model) {}

KVRPersistentStore::~KVRPersistentStore() { close(); }

std::unique_ptr<KVRPersistentStore> KVRPersistentStore::open(const std::string& path, const KVRManagedObjectModel& model,
                                                             KVRError& error) {
    std::unique_ptr<KVRPersistentStore> store(new KVRPersistentStore(path, model));
    OpenResult result = store->openFile(error);
    if (result == OpenResult::Unreadable && store->moveAside(error)) result = store->openFile(error);
    if (result == OpenResult::Opened) return store;
    return nullptr;
}

KVRPersistentStore::OpenResult KVRPersistentStore::openFile(KVRError& error) {
    int code = sqlite3_open_v2(path_.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                               nullptr);
    if (code != SQLITE_OK) {
        error = sqliteError(code);
        close();
        return OpenResult::Failed;
    }
    sqlite3_extended_result_codes(db_, 1);
    sqlite3_busy_timeout(db_, kBusyTimeoutMilliseconds);
    restrictToOwner(path_);
    OpenResult result = inspect(error);
    if (result == OpenResult::Opened) {
        if (auto failure = configureAndMigrate()) {
            error = *failure;
            result = isUnreadable(static_cast<int>(failure->code())) ? OpenResult::Unreadable : OpenResult::Failed;
        }
    }
    if (result != OpenResult::Opened) close();
    return result;
}

// Reading the version is the first access to the file, where a file that is
// not a database shows; the quick check finds damaged pages in one that is.
KVRPersistentStore::OpenResult KVRPersistentStore::inspect(KVRError& error) {
    int code = SQLITE_OK;
    std::optional<int> version = readVersion(code);
    if (!version) {
        error = sqliteError(code);
        return isUnreadable(code) ? OpenResult::Unreadable : OpenResult::Failed;
    }
    if (OpenResult checked = checkIntegrity(error); checked != OpenResult::Opened) return checked;
    if (*version > KVRManagedObjectModel::kSchemaVersion) {
        KVRLoggingUtil::console(KVRStringUtil::format(
            "The store %s has version %d, newer than version %d of this library; it is left untouched and the "
            "library runs without a store",
            path_.c_str(), *version, KVRManagedObjectModel::kSchemaVersion));
        error = KVRError(kSQLiteErrorDomain, SQLITE_CANTOPEN,
                         {{NSLocalizedDescriptionKey, "The store was made by a newer version of the library."}});
        return OpenResult::Newer;
    }
    return OpenResult::Opened;
}

KVRPersistentStore::OpenResult KVRPersistentStore::checkIntegrity(KVRError& error) {
    KVRSQLiteStatement check(db_, "PRAGMA quick_check");
    if (check.step() != SQLITE_ROW) {
        error = lastError();
        return isUnreadable(static_cast<int>(error.code())) ? OpenResult::Unreadable : OpenResult::Failed;
    }
    std::string verdict = check.columnText(0);
    if (verdict == "ok") return OpenResult::Opened;
    error = KVRError(kSQLiteErrorDomain, SQLITE_CORRUPT, {{NSLocalizedDescriptionKey, verdict}});
    return OpenResult::Unreadable;
}

std::optional<int> KVRPersistentStore::readVersion(int& code) {
    KVRSQLiteStatement statement(db_, "PRAGMA user_version");
    if (!statement.isValid() || statement.step() != SQLITE_ROW) {
        code = sqlite3_extended_errcode(db_);
        return std::nullopt;
    }
    return static_cast<int>(statement.columnInt64(0));
}

std::optional<KVRError> KVRPersistentStore::configureAndMigrate() {
    if (!switchToWriteAheadLog() || !run(db_, "PRAGMA synchronous = FULL") || !beginTransaction()) return lastError();
    if (KVRStoreSchema(model_).apply(db_) && commitTransaction()) return std::nullopt;
    KVRError error = lastError();
    rollbackTransaction();
    return error;
}

bool KVRPersistentStore::switchToWriteAheadLog() {
    KVRSQLiteStatement journal(db_, "PRAGMA journal_mode = WAL");
    return journal.step() == SQLITE_ROW && journal.columnText(0) == "wal" && journal.step() == SQLITE_DONE;
}

bool KVRPersistentStore::moveAside(const KVRError& reason) {
    std::string aside = uniqueAsidePath(path_);
    std::error_code ec;
    fs::rename(path_, aside, ec);
    if (ec) {
        KVRLoggingUtil::console("Can't move the unreadable store " + path_ + " aside [" + ec.message() + "]");
        return false;
    }
    // A journal left by the unreadable file must not be applied to the new one.
    for (const char* suffix : {"-wal", "-shm"}) {
        std::error_code ignored;
        if (fs::exists(path_ + suffix, ignored)) fs::rename(path_ + suffix, aside + suffix, ignored);
    }
    KVRLoggingUtil::console("The store " + path_ + " could not be read (" + reason.localizedDescription() +
                            "); moved it to " + aside + " and made a new store");
    setAsidePath_ = aside;
    return true;
}

void KVRPersistentStore::checkpointAndClose() {
    if (db_ && !run(db_, "PRAGMA wal_checkpoint(TRUNCATE)")) {
        KVRLoggingUtil::console("The store " + path_ + " could not be checkpointed: " + lastError().description());
    }
    close();
}

void KVRPersistentStore::close() {
    if (db_) sqlite3_close_v2(db_);
    db_ = nullptr;
}

std::optional<std::vector<KVRStoredRow>> KVRPersistentStore::selectRows(const KVREntityDescription& entity,
                                                                        const KVRRowCondition* condition) {
    auto kinds = model_.entitiesKindOf(entity);
    std::string sql = "SELECT " + selectList(entity) + " FROM " + KVRStoreSchema::quoted(entity.tableName()) +
                      " WHERE \"entity\" IN (";
    for (size_t i = 0; i < kinds.size(); ++i) sql += i ? ", ?" : "?";
    sql += ")";
    if (condition) sql += " AND " + KVRStoreSchema::quoted(condition->column) + " = ?";
    sql += " ORDER BY \"id\"";

    KVRSQLiteStatement statement(db_, sql);
    if (!statement.isValid()) return std::nullopt;
    int index = 1;
    for (const auto* kind : kinds) statement.bindText(index++, kind->name());
    if (condition) statement.bindValue(index, condition->value);

    std::vector<KVRStoredRow> rows;
    int result;
    while ((result = statement.step()) == SQLITE_ROW) rows.push_back(readRow(statement, entity));
    if (result != SQLITE_DONE) return std::nullopt;
    return rows;
}

std::optional<long long> KVRPersistentStore::countRows(const KVREntityDescription& entity) {
    auto kinds = model_.entitiesKindOf(entity);
    std::string sql = "SELECT COUNT(*) FROM " + KVRStoreSchema::quoted(entity.tableName()) + " WHERE \"entity\" IN (";
    for (size_t i = 0; i < kinds.size(); ++i) sql += i ? ", ?" : "?";
    sql += ")";
    KVRSQLiteStatement statement(db_, sql);
    if (!statement.isValid()) return std::nullopt;
    int index = 1;
    for (const auto* kind : kinds) statement.bindText(index++, kind->name());
    if (statement.step() != SQLITE_ROW) return std::nullopt;
    return statement.columnInt64(0);
}

std::optional<KVRStoredRow> KVRPersistentStore::selectRow(const KVREntityDescription& root, std::int64_t id,
                                                          bool& failed) {
    KVRRowCondition condition{"id", KVRNumber(static_cast<long long>(id))};
    auto rows = selectRows(root, &condition);
    failed = !rows;
    if (!rows || rows->empty()) return std::nullopt;
    return rows->front();
}

bool KVRPersistentStore::beginTransaction() { return run(db_, "BEGIN IMMEDIATE"); }

bool KVRPersistentStore::commitTransaction() { return run(db_, "COMMIT"); }

void KVRPersistentStore::rollbackTransaction() {
    if (!sqlite3_get_autocommit(db_)) run(db_, "ROLLBACK");
}

std::optional<std::int64_t> KVRPersistentStore::insertRow(const KVREntityDescription& entity) {
    KVRSQLiteStatement statement(db_, "INSERT INTO " + KVRStoreSchema::quoted(entity.tableName()) +
                                          " (\"entity\") VALUES (?)");
    statement.bindText(1, entity.name());
    if (!statement.execute()) return std::nullopt;
    return sqlite3_last_insert_rowid(db_);
}

bool KVRPersistentStore::updateRow(const KVREntityDescription& entity, std::int64_t id,
                                   const std::vector<KVRStoredValue>& values,
                                   const std::vector<std::optional<std::int64_t>>& links) {
    std::string sql = "UPDATE " + KVRStoreSchema::quoted(entity.tableName()) + " SET \"entity\" = ?";
    for (const auto& attribute : entity.attributes()) sql += ", " + KVRStoreSchema::quoted(attribute.name) + " = ?";
    for (const auto* key : entity.foreignKeys()) sql += ", " + KVRStoreSchema::quoted(key->name) + " = ?";
    sql += " WHERE \"id\" = ?";

    KVRSQLiteStatement statement(db_, sql);
    int index = 1;
    statement.bindText(index++, entity.name());
    for (const auto& value : values) statement.bindValue(index++, value);
    for (const auto& link : links) {
        if (link) statement.bindInt64(index++, *link);
        else statement.bindNull(index++);
    }
    statement.bindInt64(index, id);
    return statement.execute();
}

bool KVRPersistentStore::deleteRow(const KVREntityDescription& entity, std::int64_t id) {
    KVRSQLiteStatement statement(db_, "DELETE FROM " + KVRStoreSchema::quoted(entity.tableName()) + " WHERE \"id\" = ?");
    statement.bindInt64(1, id);
    return statement.execute();
}

KVRError KVRPersistentStore::lastError() const {
    if (!db_) return sqliteError(SQLITE_CANTOPEN);
    return KVRError(kSQLiteErrorDomain, sqlite3_extended_errcode(db_), {{NSLocalizedDescriptionKey, sqlite3_errmsg(db_)}});
}

KVRError KVRPersistentStore::sqliteError(int code) const {
    return KVRError(kSQLiteErrorDomain, code, {{NSLocalizedDescriptionKey, sqlite3_errstr(code)}});
}
