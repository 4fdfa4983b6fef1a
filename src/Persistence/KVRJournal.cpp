#include "Persistence/KVRJournal.h"

#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRManagedObject.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVRManagedObjectContext.h"
#include "Persistence/KVRPersistenceController.h"
#include "Persistence/KVRSQLiteStatement.h"

#include <sqlite3.h>

#include <array>
#include <functional>
#include <string>

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;
using Kind = KVRJournalEntry::Kind;

// Column order of every read and write; "id" is kept apart.
constexpr std::array<const char*, 16> kColumns = {
    "kind",       "state",     "date",          "initiatorKey", "reference", "amount",   "merchantKey", "hostResponse",
    "receiptKey", "authorisationCode", "hostReference", "result", "attempts", "lastError", "process", "keyCount"};
constexpr int kColumnCount = static_cast<int>(kColumns.size());

// "a, b, c" with each column followed by `suffix`.
std::string columnList(const char* suffix = "") {
    std::string list;
    for (const char* column : kColumns) list += (list.empty() ? "\"" : ", \"") + std::string(column) + "\"" + suffix;
    return list;
}

const char* kindName(Kind kind) { return kind == Kind::Cancellation ? "cancellation" : "authorisation"; }

std::int64_t nanoseconds(std::chrono::system_clock::time_point date) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(date.time_since_epoch()).count();
}

void bindText(KVRSQLiteStatement& statement, int index, const std::optional<std::string>& text) {
    if (text) statement.bindText(index, *text);
    else statement.bindNull(index);
}

void bindNumber(KVRSQLiteStatement& statement, int index, std::optional<long long> number) {
    if (number) statement.bindInt64(index, *number);
    else statement.bindNull(index);
}

// Binds the columns from index 1 on, in kColumns order.
void bindEntry(KVRSQLiteStatement& statement, const KVRJournalEntry& entry) {
    statement.bindText(1, kindName(entry.kind));
    statement.bindText(2, entry.state);
    statement.bindInt64(3, nanoseconds(entry.date));
    statement.bindText(4, entry.initiatorTransactionKey);
    bindText(statement, 5, entry.reference);
    statement.bindText(6, entry.amount);
    bindText(statement, 7, entry.merchantKey);
    bindNumber(statement, 8, entry.hostResponse);
    bindText(statement, 9, entry.receiptTransactionKey);
    bindText(statement, 10, entry.authorisationCode);
    bindText(statement, 11, entry.hostReference);
    bindNumber(statement, 12, entry.result);
    statement.bindInt64(13, entry.attempts);
    bindText(statement, 14, entry.lastError);
    statement.bindInt64(15, entry.processIdentifier);
    bindNumber(statement, 16, entry.keyCount);
}

std::optional<std::string> textAt(const KVRSQLiteStatement& statement, int index) {
    if (statement.columnIsNull(index)) return std::nullopt;
    return statement.columnText(index);
}

std::optional<long long> numberAt(const KVRSQLiteStatement& statement, int index) {
    if (statement.columnIsNull(index)) return std::nullopt;
    return statement.columnInt64(index);
}

// A row of "SELECT id, <kColumns>".
KVRJournalEntry readEntry(const KVRSQLiteStatement& statement) {
    KVRJournalEntry entry;
    entry.identifier = statement.columnInt64(0);
    entry.kind = statement.columnText(1) == "cancellation" ? Kind::Cancellation : Kind::Authorisation;
    entry.state = statement.columnText(2);
    entry.date = std::chrono::system_clock::time_point(std::chrono::duration_cast<std::chrono::system_clock::duration>(
        std::chrono::nanoseconds(statement.columnInt64(3))));
    entry.initiatorTransactionKey = statement.columnText(4);
    entry.reference = textAt(statement, 5);
    entry.amount = statement.columnText(6);
    entry.merchantKey = textAt(statement, 7);
    if (auto response = numberAt(statement, 8)) entry.hostResponse = static_cast<int>(*response);
    entry.receiptTransactionKey = textAt(statement, 9);
    entry.authorisationCode = textAt(statement, 10);
    entry.hostReference = textAt(statement, 11);
    if (auto result = numberAt(statement, 12)) entry.result = static_cast<int>(*result);
    entry.attempts = static_cast<int>(statement.columnInt64(13));
    entry.lastError = textAt(statement, 14);
    entry.processIdentifier = statement.columnInt64(15);
    entry.keyCount = numberAt(statement, 16);
    return entry;
}

bool writeUpdate(sqlite3* db, const KVRJournalEntry& entry) {
    KVRSQLiteStatement statement(db, "UPDATE \"KVRJournal\" SET " + columnList(" = ?") + " WHERE \"id\" = ?");
    bindEntry(statement, entry);
    statement.bindInt64(kColumnCount + 1, entry.identifier);
    return statement.execute() && sqlite3_changes(db) == 1;
}

std::shared_ptr<KVRManagedObjectContext> context() {
    return KVRPersistenceController::sharedController().managedObjectContext();
}

// The statement's rows, or none when there is no store.
std::vector<KVRJournalEntry> select(const std::string& where, const std::function<void(KVRSQLiteStatement&)>& bind = {}) {
    Lock lock(KVRManagedObjectContext::mutex());
    auto* store = context()->store();
    if (!store) return {};
    KVRSQLiteStatement statement(store->database(), "SELECT \"id\", " + columnList() + " FROM \"KVRJournal\" " + where);
    if (bind) bind(statement);
    std::vector<KVRJournalEntry> entries;
    int result;
    while ((result = statement.step()) == SQLITE_ROW) entries.push_back(readEntry(statement));
    if (result != SQLITE_DONE) KVRLoggingUtil::console("Problem! " + store->lastError().description());
    return entries;
}

}  // namespace

bool KVRJournal::createTable(sqlite3* db) {
    return sqlite3_exec(db,
                        "CREATE TABLE IF NOT EXISTS \"KVRJournal\" (\"id\" INTEGER PRIMARY KEY, \"kind\" TEXT NOT NULL, "
                        "\"state\" TEXT NOT NULL, \"date\" INTEGER, \"initiatorKey\" TEXT, \"reference\" TEXT, "
                        "\"amount\" TEXT, \"merchantKey\" TEXT, \"hostResponse\" INTEGER, \"receiptKey\" TEXT, "
                        "\"authorisationCode\" TEXT, \"hostReference\" TEXT, \"result\" INTEGER, "
                        "\"attempts\" INTEGER NOT NULL DEFAULT 0, \"lastError\" TEXT, \"process\" INTEGER, "
                        "\"keyCount\" INTEGER); "
                        // Every sale asks for the highest key count: without the
                        // index, that read grows with the journal.
                        "CREATE INDEX IF NOT EXISTS \"KVRJournalKeyCount\" ON \"KVRJournal\" (\"keyCount\")",
                        nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool KVRJournal::append(KVRJournalEntry& entry) {
    Lock lock(KVRManagedObjectContext::mutex());
    auto* store = context()->store();
    if (!store || !store->beginTransaction()) return false;
    std::string placeholders;
    for (int i = 0; i < kColumnCount; ++i) placeholders += i ? ", ?" : "?";
    KVRSQLiteStatement statement(store->database(),
                                 "INSERT INTO \"KVRJournal\" (" + columnList() + ") VALUES (" + placeholders + ")");
    bindEntry(statement, entry);
    if (!statement.execute() || !store->commitTransaction()) {
        KVRLoggingUtil::console("The journal could not be written: " + store->lastError().description());
        store->rollbackTransaction();
        return false;
    }
    entry.identifier = sqlite3_last_insert_rowid(store->database());
    return true;
}

bool KVRJournal::update(const KVRJournalEntry& entry) {
    Lock lock(KVRManagedObjectContext::mutex());
    auto* store = context()->store();
    if (!store || !store->beginTransaction()) return false;
    if (!writeUpdate(store->database(), entry) || !store->commitTransaction()) {
        KVRLoggingUtil::console("The journal could not be written: " + store->lastError().description());
        store->rollbackTransaction();
        return false;
    }
    return true;
}

bool KVRJournal::commit(const KVRJournalEntry* entry, const std::vector<std::shared_ptr<KVRManagedObject>>& deletions) {
    Lock lock(KVRManagedObjectContext::mutex());
    auto shared = context();
    for (const auto& object : deletions) shared->deleteObject(object);
    std::function<bool(KVRPersistentStore&)> alsoWrite;
    if (entry) alsoWrite = [entry](KVRPersistentStore& store) { return writeUpdate(store.database(), *entry); };
    if (auto error = shared->save(alsoWrite)) {
        KVRLoggingUtil::console("An error!! " + error->description());
        return false;
    }
    return true;
}

bool KVRJournal::commitWithRecord(const KVRJournalEntry& entry, const std::shared_ptr<KVRManagedObject>& record) {
    Lock lock(KVRManagedObjectContext::mutex());
    std::vector<std::shared_ptr<KVRManagedObject>> objects;
    if (record && !record->isInserted()) objects.push_back(record);
    auto alsoWrite = [&entry](KVRPersistentStore& store) { return writeUpdate(store.database(), entry); };
    if (auto error = context()->saveOnly(objects, alsoWrite)) {
        KVRLoggingUtil::console("An error!! " + error->description());
        return false;
    }
    return true;
}

std::optional<KVRJournalEntry> KVRJournal::entry(std::int64_t identifier) {
    auto found = select("WHERE \"id\" = ?", [identifier](KVRSQLiteStatement& s) { s.bindInt64(1, identifier); });
    if (found.empty()) return std::nullopt;
    return found.front();
}

std::vector<KVRJournalEntry> KVRJournal::unfinished() {
    return select("WHERE \"state\" IN (?, ?, ?, ?) ORDER BY \"id\"", [](KVRSQLiteStatement& s) {
        s.bindText(1, KVRJournalEntry::kSent);
        s.bindText(2, KVRJournalEntry::kAnswered);
        s.bindText(3, KVRJournalEntry::kReversalPending);
        s.bindText(4, KVRJournalEntry::kCancellationPending);
    });
}

std::optional<KVRJournalEntry> KVRJournal::latest(Kind kind) {
    auto found = select("WHERE \"kind\" = ? ORDER BY \"id\" DESC LIMIT 1",
                        [kind](KVRSQLiteStatement& s) { s.bindText(1, kindName(kind)); });
    if (found.empty()) return std::nullopt;
    return found.front();
}

std::optional<long long> KVRJournal::highestKeyCount() {
    Lock lock(KVRManagedObjectContext::mutex());
    auto* store = context()->store();
    if (!store) return std::nullopt;
    KVRSQLiteStatement statement(store->database(), "SELECT MAX(\"keyCount\") FROM \"KVRJournal\"");
    if (statement.step() != SQLITE_ROW || statement.columnIsNull(0)) return std::nullopt;
    return statement.columnInt64(0);
}

std::shared_ptr<KVRTransactionModel> KVRJournal::transactionOf(const KVRJournalEntry& entry) {
    if (entry.initiatorTransactionKey.empty()) return nullptr;
    auto candidates = KVRTransactionModel::findAllByAttribute("initiatorTransactionKey", entry.initiatorTransactionKey);
    for (const auto& candidate : candidates) {
        if (entry.receiptTransactionKey && candidate->receiptTransactionKey() == entry.receiptTransactionKey) return candidate;
    }
    return candidates.empty() ? nullptr : candidates.back();
}
