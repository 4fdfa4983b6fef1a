#include "KovraTransactionFormat.h"

#include "KovraText.h"
#include "KovraTextTable.h"

#include <kovra/KVRTransacInfoProvider.h>
#include <kovra/KVRTransactionModel.h>

#include <ctime>
#include <optional>

namespace {

nlohmann::ordered_json orNull(const std::optional<std::string>& text) {
    return text ? nlohmann::ordered_json(*text) : nlohmann::ordered_json(nullptr);
}

std::string orDash(const std::optional<std::string>& text) { return text && !text->empty() ? *text : "-"; }

long long amountInCents(const KVRTransactionModel& transaction) {
    auto amount = transaction.amount();
    return amount ? amount->longLongValue() : 0;
}

const char* typeName(int type) { return type == 0 ? "credit" : type == 1 ? "debit" : "unknown"; }

std::string cardText(const std::optional<std::string>& lastDigits) {
    return lastDigits && !lastDigits->empty() ? "**** " + *lastDigits : "-";
}

// "single payment", "3 instalments (merchant)"...
std::string instalmentText(const KVRTransactionModel& transaction) {
    int count = transaction.instalmentAmount();
    if (transaction.instalmentType() == 0 || count <= 1) return "single payment";
    return std::to_string(count) + " instalments (" + (transaction.instalmentType() == 2 ? "issuer" : "merchant") + ")";
}

// "2025-05-12T17:03:00Z", or empty without a date.
std::string isoDate(const KVRTransactionModel& transaction) {
    auto date = transaction.date();
    if (!date) return std::string();
    std::time_t seconds = std::chrono::system_clock::to_time_t(*date);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

}  // namespace

nlohmann::ordered_json KovraTransactionFormat::toJson(const Transaction& transaction) {
    KVRTransacInfoProvider view(transaction);
    std::string date = isoDate(*transaction);
    return {
        {"reference", orNull(view.reference)},
        {"authorisationCode", orNull(view.authorisationCode)},
        {"brand", orNull(view.flag)},
        {"lastDigits", orNull(view.pan)},
        {"status", transaction->status()},
        {"statusText", transaction->statusString()},
        {"amount", amountInCents(*transaction)},
        {"type", typeName(transaction->type())},
        {"typeText", transaction->typeString()},
        {"instalments", transaction->instalmentAmount()},
        {"instalmentType", transaction->instalmentType()},
        {"date", date.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(date)},
        {"aid", orNull(view.aid)},
        {"initiatorTransactionKey", orNull(view.transactionId)},
        {"receiptTransactionKey", orNull(view.receiptTransactionKey)},
    };
}

nlohmann::ordered_json KovraTransactionFormat::toJson(const std::vector<Transaction>& transactions) {
    auto list = nlohmann::ordered_json::array();
    for (const auto& transaction : transactions) list.push_back(toJson(transaction));
    return list;
}

std::vector<std::pair<std::string, std::string>> KovraTransactionFormat::details(const Transaction& transaction) {
    KVRTransacInfoProvider view(transaction);
    return {
        {"reference", orDash(view.reference)},
        {"authorisation code", orDash(view.authorisationCode)},
        {"brand", orDash(view.flag)},
        {"card", cardText(view.pan)},
        {"amount", KovraText::reais(amountInCents(*transaction))},
        {"type", orDash(view.type) + ", " + instalmentText(*transaction)},
        {"status", orDash(view.status)},
        {"date", orDash(view.date)},
    };
}

std::vector<std::string> KovraTransactionFormat::detailLines(const Transaction& transaction,
                                                             const std::string& indent) {
    std::vector<std::string> lines;
    for (const auto& [label, value] : details(transaction))
        lines.push_back(indent + KovraText::padded(label, 20) + value);
    return lines;
}

KovraTextTable KovraTransactionFormat::table(const std::vector<Transaction>& transactions) {
    KovraTextTable table({"DATE", "REFERENCE", "AMOUNT", "TYPE", "CARD", "BRAND", "AUTH", "STATUS"});
    for (const auto& transaction : transactions) {
        KVRTransacInfoProvider view(transaction);
        table.addRow({orDash(view.date), orDash(view.reference), KovraText::reais(amountInCents(*transaction)),
                      orDash(view.type), cardText(view.pan), orDash(view.flag), orDash(view.authorisationCode),
                      orDash(view.status)});
    }
    return table;
}
