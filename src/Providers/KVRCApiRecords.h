#pragma once

#include <kovra/KVRJournalEntry.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class KVRTransactionModel;

/// Stored transactions and journal entries as the C interface hands them
/// out: flat fields for its record struct, and JSON texts.
class KVRCApiRecords {
public:
    /// A transaction's fields: texts by their JSON name (none when unset) and
    /// the numbers.
    struct Fields {
        std::map<std::string, std::optional<std::string>> texts;
        int status = 0;
        long long amount = 0;
        int type = 0;
        int instalments = 0;
        int instalmentType = 0;
    };

    KVRCApiRecords() = delete;

    static Fields fields(const std::shared_ptr<KVRTransactionModel>& transaction);
    /// A JSON object; its text fields are null when unset.
    static std::string transaction(const std::shared_ptr<KVRTransactionModel>& transaction);
    static std::string transactions(const std::vector<std::shared_ptr<KVRTransactionModel>>& transactions);
    /// A JSON object, or "null" for none.
    static std::string journalEntry(const std::optional<KVRJournalEntry>& entry);
    static std::string journal(const std::vector<KVRJournalEntry>& entries);
};
