#pragma once

#include <kovra/KVRJournalEntry.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// How the tool shows the journal's entries: what an exchange with the
/// acquirer became, and what is still owed.
class KovraJournalFormat {
public:
    KovraJournalFormat() = delete;

    static nlohmann::ordered_json toJson(const KVRJournalEntry& entry);
    static nlohmann::ordered_json toJson(const std::vector<KVRJournalEntry>& entries);
    /// Label and value lines, the sale's record after them when it is stored.
    static std::vector<std::string> detailLines(const KVRJournalEntry& entry, const std::string& indent = "");
    /// One line per entry: "DATE  KIND  STATE  AMOUNT  INITIATOR KEY  ATTEMPTS  LAST ERROR".
    static std::vector<std::string> tableLines(const std::vector<KVRJournalEntry>& entries);
};
