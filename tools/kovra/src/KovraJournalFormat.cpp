#include "KovraJournalFormat.h"

#include "KovraText.h"
#include "KovraTextTable.h"
#include "KovraTransactionFormat.h"

#include <kovra/KVRTransactionModel.h>

#include <ctime>

namespace {

using json = nlohmann::ordered_json;

json orNull(const std::optional<std::string>& text) { return text ? json(*text) : json(nullptr); }

std::string orDash(const std::optional<std::string>& text) { return text && !text->empty() ? *text : "-"; }

const char* kindName(const KVRJournalEntry& entry) {
    return entry.kind == KVRJournalEntry::Kind::Cancellation ? "cancellation" : "sale";
}

const char* hostAnswer(const std::optional<int>& response) {
    if (!response) return "none kept";
    switch (*response) {
        case 0: return "declined";
        case 1: return "approved";
        case 2: return "partly approved";
        case 3: return "technical error";
    }
    return "unknown";
}

// Local time, "2025-05-12 17:03:00".
std::string localDate(std::chrono::system_clock::time_point date) {
    std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

std::string amountText(const std::string& cents) {
    try {
        return cents.empty() ? "-" : KovraText::reais(std::stoll(cents));
    } catch (const std::exception&) {
        return cents;
    }
}

}  // namespace

json KovraJournalFormat::toJson(const KVRJournalEntry& entry) {
    return {
        {"kind", kindName(entry)},
        {"state", entry.state},
        {"date", localDate(entry.date)},
        {"amount", entry.amount},
        {"initiatorTransactionKey", entry.initiatorTransactionKey},
        {"reference", orNull(entry.hostReference ? entry.hostReference : entry.reference)},
        {"hostAnswer", hostAnswer(entry.hostResponse)},
        {"receiptTransactionKey", orNull(entry.receiptTransactionKey)},
        {"authorisationCode", orNull(entry.authorisationCode)},
        {"result", entry.result ? json(*entry.result) : json(nullptr)},
        {"attempts", entry.attempts},
        {"lastError", orNull(entry.lastError)},
        {"transaction", entry.transaction ? KovraTransactionFormat::toJson(entry.transaction) : json(nullptr)},
    };
}

json KovraJournalFormat::toJson(const std::vector<KVRJournalEntry>& entries) {
    auto list = json::array();
    for (const auto& entry : entries) list.push_back(toJson(entry));
    return list;
}

std::vector<std::string> KovraJournalFormat::detailLines(const KVRJournalEntry& entry, const std::string& indent) {
    std::vector<std::pair<std::string, std::string>> details = {
        {"state", entry.state},
        {"date", localDate(entry.date)},
        {"amount", amountText(entry.amount)},
        {"initiator key", orDash(entry.initiatorTransactionKey)},
        {"acquirer answer", hostAnswer(entry.hostResponse)},
        {"advices sent", std::to_string(entry.attempts) + (entry.lastError ? " (last: " + *entry.lastError + ")" : "")},
    };
    std::vector<std::string> lines;
    for (const auto& [label, value] : details) lines.push_back(indent + KovraText::padded(label, 20) + value);
    if (!entry.transaction) {
        lines.push_back(indent + KovraText::padded("record", 20) + "none stored");
        return lines;
    }
    lines.push_back(indent + "record:");
    for (const auto& line : KovraTransactionFormat::detailLines(entry.transaction, indent + "  ")) lines.push_back(line);
    return lines;
}

std::vector<std::string> KovraJournalFormat::tableLines(const std::vector<KVRJournalEntry>& entries) {
    KovraTextTable table({"DATE", "KIND", "STATE", "AMOUNT", "INITIATOR KEY", "ADVICES", "LAST ERROR"});
    for (const auto& entry : entries) {
        table.addRow({localDate(entry.date), kindName(entry), entry.state, amountText(entry.amount),
                      orDash(entry.initiatorTransactionKey), std::to_string(entry.attempts), orDash(entry.lastError)});
    }
    return table.lines();
}
