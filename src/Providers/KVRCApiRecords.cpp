#include "Providers/KVRCApiRecords.h"

#include <kovra/KVRTransacInfoProvider.h>
#include <kovra/KVRTransactionModel.h>

#include <nlohmann/json.hpp>

#include <ctime>

namespace {

using json = nlohmann::ordered_json;

json orNull(const std::optional<std::string>& text) { return text ? json(*text) : json(nullptr); }

// "2026-05-12T17:03:00Z": UTC, so that a program in another time zone reads it right.
std::string isoDate(std::chrono::system_clock::time_point date) {
    std::time_t seconds = std::chrono::system_clock::to_time_t(date);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

const char* hostAnswer(const std::optional<int>& response) {
    if (!response) return nullptr;
    switch (*response) {
        case 0: return "declined";
        case 1: return "approved";
        case 2: return "partly approved";
        case 3: return "technical error";
    }
    return "unknown";
}

json transactionJson(const std::shared_ptr<KVRTransactionModel>& transaction) {
    auto fields = KVRCApiRecords::fields(transaction);
    auto& texts = fields.texts;
    return {
        {"reference", orNull(texts["reference"])},
        {"authorisationCode", orNull(texts["authorisationCode"])},
        {"brand", orNull(texts["brand"])},
        {"lastDigits", orNull(texts["lastDigits"])},
        {"status", fields.status},
        {"statusText", orNull(texts["statusText"])},
        {"amount", fields.amount},
        {"type", fields.type},
        {"instalments", fields.instalments},
        {"instalmentType", fields.instalmentType},
        {"date", orNull(texts["date"])},
        {"aid", orNull(texts["aid"])},
        {"initiatorTransactionKey", orNull(texts["initiatorTransactionKey"])},
        {"receiptTransactionKey", orNull(texts["receiptTransactionKey"])},
    };
}

json entryJson(const KVRJournalEntry& entry) {
    const char* answer = hostAnswer(entry.hostResponse);
    return {
        {"kind", entry.kind == KVRJournalEntry::Kind::Cancellation ? "cancellation" : "sale"},
        {"state", entry.state},
        {"date", isoDate(entry.date)},
        {"amount", entry.amount},
        {"initiatorTransactionKey", entry.initiatorTransactionKey},
        {"reference", orNull(entry.hostReference ? entry.hostReference : entry.reference)},
        {"hostAnswer", answer ? json(answer) : json(nullptr)},
        {"receiptTransactionKey", orNull(entry.receiptTransactionKey)},
        {"authorisationCode", orNull(entry.authorisationCode)},
        {"result", entry.result ? json(*entry.result) : json(nullptr)},
        {"attempts", entry.attempts},
        {"lastError", orNull(entry.lastError)},
        {"transaction", entry.transaction ? transactionJson(entry.transaction) : json(nullptr)},
    };
}

}  // namespace

KVRCApiRecords::Fields KVRCApiRecords::fields(const std::shared_ptr<KVRTransactionModel>& transaction) {
    KVRTransacInfoProvider view(transaction);
    Fields fields;
    auto date = transaction->date();
    fields.texts = {
        {"reference", view.reference},
        {"authorisationCode", view.authorisationCode},
        {"brand", view.flag},
        {"lastDigits", view.pan},
        {"statusText", transaction->statusString()},
        {"date", date ? std::optional<std::string>(isoDate(*date)) : std::nullopt},
        {"aid", view.aid},
        {"initiatorTransactionKey", view.transactionId},
        {"receiptTransactionKey", view.receiptTransactionKey},
    };
    auto amount = transaction->amount();
    fields.amount = amount ? amount->longLongValue() : 0;
    fields.status = transaction->status();
    fields.type = transaction->type();
    fields.instalments = transaction->instalmentAmount();
    fields.instalmentType = transaction->instalmentType();
    return fields;
}

std::string KVRCApiRecords::transaction(const std::shared_ptr<KVRTransactionModel>& transaction) {
    return transactionJson(transaction).dump();
}

std::string KVRCApiRecords::transactions(const std::vector<std::shared_ptr<KVRTransactionModel>>& transactions) {
    auto list = json::array();
    for (const auto& transaction : transactions) list.push_back(transactionJson(transaction));
    return list.dump();
}

std::string KVRCApiRecords::journalEntry(const std::optional<KVRJournalEntry>& entry) {
    return entry ? entryJson(*entry).dump() : std::string("null");
}

std::string KVRCApiRecords::journal(const std::vector<KVRJournalEntry>& entries) {
    auto list = json::array();
    for (const auto& entry : entries) list.push_back(entryJson(entry));
    return list.dump();
}
