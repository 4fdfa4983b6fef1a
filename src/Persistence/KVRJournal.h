#pragma once

#include <kovra/KVRJournalEntry.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class KVRManagedObject;
class KVRTransactionModel;
struct sqlite3;

/// The journal of exchanges that can move money, kept in the store's own
/// table "KVRJournal" beside the record types (so it never shows among
/// them). Every write is a transaction synced to disk before it returns.
/// Without a store nothing can be written, and the writes say so.
class KVRJournal {
public:
    KVRJournal() = delete;

    /// Creates the table when missing; runs inside the schema's transaction.
    static bool createTable(sqlite3* db);

    /// Writes a new entry on its own and sets its identifier.
    static bool append(KVRJournalEntry& entry);
    /// Writes the entry's current values on their own.
    static bool update(const KVRJournalEntry& entry);
    /// One transaction: every pending change of the object context, the
    /// records in `deletions` removed, and the entry's values when given. On
    /// failure nothing is written; the context's changes (deletions included)
    /// stay pending for the next save.
    static bool commit(const KVRJournalEntry* entry,
                       const std::vector<std::shared_ptr<KVRManagedObject>>& deletions = {});

    /// One transaction: the entry's values and the changes of one stored
    /// record, nothing else of the context (a sale being made elsewhere stays
    /// unwritten). A record not stored yet is left to its own save.
    static bool commitWithRecord(const KVRJournalEntry& entry, const std::shared_ptr<KVRManagedObject>& record);

    static std::optional<KVRJournalEntry> entry(std::int64_t identifier);
    /// Entries with work left, oldest first.
    static std::vector<KVRJournalEntry> unfinished();
    /// The newest entry of a kind.
    static std::optional<KVRJournalEntry> latest(KVRJournalEntry::Kind kind);
    /// The stored sale an entry belongs to: the record with its initiator key
    /// (with its receipt key too, when several share the initiator key).
    static std::shared_ptr<KVRTransactionModel> transactionOf(const KVRJournalEntry& entry);
    /// The highest initiator-key count an authorisation was sent with.
    static std::optional<long long> highestKeyCount();
};
