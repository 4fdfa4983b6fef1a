#include "Persistence/KVRStoreSchema.h"

#include "Persistence/KVRJournal.h"
#include "Persistence/KVRSQLiteStatement.h"

#include <sqlite3.h>

#include <set>
#include <utility>
#include <vector>

namespace {

bool run(sqlite3* db, const std::string& sql) { return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK; }

/// Every column of a table after "id", with its declared type. "entity" names
/// the record type of the row (the table's own type, or one that specialises it).
std::vector<std::pair<std::string, std::string>> dataColumns(const KVREntityDescription& root) {
    std::vector<std::pair<std::string, std::string>> columns;
    columns.emplace_back("entity", "TEXT NOT NULL DEFAULT '" + root.name() + "'");
    for (const auto& attribute : root.attributes()) {
        columns.emplace_back(attribute.name, KVRStoreSchema::columnType(attribute.type));
    }
    for (const auto* key : root.foreignKeys()) columns.emplace_back(key->name, "INTEGER");
    return columns;
}

}  // namespace

std::string KVRStoreSchema::quoted(const std::string& identifier) { return "\"" + identifier + "\""; }

std::string KVRStoreSchema::columnType(KVRAttributeType type) {
    switch (type) {
        case KVRAttributeType::Text: return "TEXT";
        case KVRAttributeType::Number: return "NUMERIC";
        case KVRAttributeType::Date: return "INTEGER";
    }
    return "";
}

bool KVRStoreSchema::apply(sqlite3* db) const {
    for (const auto* root : model_.rootEntities()) {
        if (!applyTable(db, *root)) return false;
    }
    if (!KVRJournal::createTable(db)) return false;
    return run(db, "PRAGMA user_version = " + std::to_string(KVRManagedObjectModel::kSchemaVersion));
}

bool KVRStoreSchema::applyTable(sqlite3* db, const KVREntityDescription& root) const {
    std::string sql = "CREATE TABLE IF NOT EXISTS " + quoted(root.name()) + " (\"id\" INTEGER PRIMARY KEY";
    for (const auto& [name, type] : dataColumns(root)) sql += ", " + quoted(name) + " " + type;
    sql += ")";
    return run(db, sql) && addMissingColumns(db, root) && createIndexes(db, root);
}

bool KVRStoreSchema::addMissingColumns(sqlite3* db, const KVREntityDescription& root) {
    std::set<std::string> existing;
    KVRSQLiteStatement info(db, "SELECT name FROM pragma_table_info(?)");
    if (!info.isValid()) return false;
    info.bindText(1, root.name());
    int result;
    while ((result = info.step()) == SQLITE_ROW) existing.insert(info.columnText(0));
    if (result != SQLITE_DONE) return false;
    for (const auto& [name, type] : dataColumns(root)) {
        if (existing.count(name)) continue;
        if (!run(db, "ALTER TABLE " + quoted(root.name()) + " ADD COLUMN " + quoted(name) + " " + type)) return false;
    }
    return true;
}

// Relationships are followed from both sides, so the link columns are indexed.
bool KVRStoreSchema::createIndexes(sqlite3* db, const KVREntityDescription& root) {
    for (const auto* key : root.foreignKeys()) {
        std::string index = quoted(root.name() + "_" + key->name);
        if (!run(db, "CREATE INDEX IF NOT EXISTS " + index + " ON " + quoted(root.name()) + " (" + quoted(key->name) + ")")) {
            return false;
        }
    }
    return true;
}
