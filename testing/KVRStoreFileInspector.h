#pragma once

#include <sqlite3.h>

#include <optional>
#include <stdexcept>
#include <string>

/// Reads a store file through its own SQLite connection, the way another
/// process would see it: only what has been committed.
class KVRStoreFileInspector {
public:
    explicit KVRStoreFileInspector(const std::string& path) {
        if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
            sqlite3_close(db_);
            throw std::runtime_error("cannot open " + path);
        }
    }
    ~KVRStoreFileInspector() { sqlite3_close(db_); }
    KVRStoreFileInspector(const KVRStoreFileInspector&) = delete;
    KVRStoreFileInspector& operator=(const KVRStoreFileInspector&) = delete;

    /// The first column of the first row as text; none for NULL or no row.
    std::optional<std::string> text(const std::string& sql) const {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(db_));
        }
        std::optional<std::string> result;
        if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_type(statement, 0) != SQLITE_NULL) {
            result = std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)),
                                 static_cast<size_t>(sqlite3_column_bytes(statement, 0)));
        }
        sqlite3_finalize(statement);
        return result;
    }

    long long number(const std::string& sql) const { return std::stoll(text(sql).value_or("0")); }
    long long count(const std::string& table) const { return number("SELECT count(*) FROM \"" + table + "\""); }

private:
    sqlite3* db_ = nullptr;
};
