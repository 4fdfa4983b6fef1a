#include "Persistence/KVRSQLiteStatement.h"

#include <sqlite3.h>

namespace {

using TimePoint = std::chrono::system_clock::time_point;

// Dates are kept as nanoseconds since the epoch: exact for every time point
// the clock can hold, so a date reads back equal to the one written.
std::int64_t dateToStorage(TimePoint date) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(date.time_since_epoch()).count();
}

TimePoint dateFromStorage(std::int64_t nanoseconds) {
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(std::chrono::nanoseconds(nanoseconds)));
}

}  // namespace

KVRSQLiteStatement::KVRSQLiteStatement(sqlite3* db, const std::string& sql) {
    if (sqlite3_prepare_v2(db, sql.c_str(), static_cast<int>(sql.size()), &statement_, nullptr) != SQLITE_OK) {
        sqlite3_finalize(statement_);
        statement_ = nullptr;
    }
}

KVRSQLiteStatement::~KVRSQLiteStatement() { sqlite3_finalize(statement_); }

void KVRSQLiteStatement::bindValue(int index, const KVRStoredValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        bindText(index, *text);
    } else if (const auto* number = std::get_if<KVRNumber>(&value)) {
        if (number->isInteger()) sqlite3_bind_int64(statement_, index, number->longLongValue());
        else sqlite3_bind_double(statement_, index, number->doubleValue());
    } else if (const auto* date = std::get_if<TimePoint>(&value)) {
        bindInt64(index, dateToStorage(*date));
    } else {
        bindNull(index);
    }
}

void KVRSQLiteStatement::bindText(int index, const std::string& text) {
    sqlite3_bind_text64(statement_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void KVRSQLiteStatement::bindInt64(int index, std::int64_t value) { sqlite3_bind_int64(statement_, index, value); }

void KVRSQLiteStatement::bindNull(int index) { sqlite3_bind_null(statement_, index); }

int KVRSQLiteStatement::step() { return statement_ ? sqlite3_step(statement_) : SQLITE_MISUSE; }

bool KVRSQLiteStatement::execute() {
    int result;
    while ((result = step()) == SQLITE_ROW) {
    }
    return result == SQLITE_DONE;
}

bool KVRSQLiteStatement::columnIsNull(int index) const {
    return sqlite3_column_type(statement_, index) == SQLITE_NULL;
}

std::int64_t KVRSQLiteStatement::columnInt64(int index) const { return sqlite3_column_int64(statement_, index); }

std::string KVRSQLiteStatement::columnText(int index) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, index));
    int length = sqlite3_column_bytes(statement_, index);
    return bytes ? std::string(bytes, static_cast<size_t>(length)) : std::string();
}

KVRStoredValue KVRSQLiteStatement::columnValue(int index, KVRAttributeType type) const {
    int stored = sqlite3_column_type(statement_, index);
    if (stored == SQLITE_NULL) return std::monostate{};
    switch (type) {
        case KVRAttributeType::Text:
            return columnText(index);
        case KVRAttributeType::Number:
            if (stored == SQLITE_INTEGER) return KVRNumber(static_cast<long long>(columnInt64(index)));
            if (stored == SQLITE_FLOAT) return KVRNumber(sqlite3_column_double(statement_, index));
            return KVRNumber::fromString(columnText(index));
        case KVRAttributeType::Date:
            return dateFromStorage(columnInt64(index));
    }
    return std::monostate{};
}
