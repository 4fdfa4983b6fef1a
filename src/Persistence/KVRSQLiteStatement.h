#pragma once

#include "Persistence/KVREntityDescription.h"
#include "Persistence/KVRStoredValue.h"

#include <cstdint>
#include <optional>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

/// A prepared SQLite statement, finalized when it goes out of scope. Values
/// are always bound, never written into the statement's text.
class KVRSQLiteStatement {
public:
    KVRSQLiteStatement(sqlite3* db, const std::string& sql);
    ~KVRSQLiteStatement();
    KVRSQLiteStatement(const KVRSQLiteStatement&) = delete;
    KVRSQLiteStatement& operator=(const KVRSQLiteStatement&) = delete;

    /// False when the text did not compile.
    bool isValid() const { return statement_ != nullptr; }

    // Parameters are numbered from 1.
    void bindValue(int index, const KVRStoredValue& value);
    void bindText(int index, const std::string& text);
    void bindInt64(int index, std::int64_t value);
    void bindNull(int index);

    /// SQLITE_ROW, SQLITE_DONE or an error code.
    int step();
    /// Steps to the end; true when the statement completed.
    bool execute();

    bool columnIsNull(int index) const;
    std::int64_t columnInt64(int index) const;
    std::string columnText(int index) const;
    /// The column read as the given attribute type; unset for NULL.
    KVRStoredValue columnValue(int index, KVRAttributeType type) const;

private:
    sqlite3_stmt* statement_ = nullptr;
};
