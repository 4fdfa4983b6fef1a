#include "Transactions/KVRMailController.h"

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRServiceEndpoint.h"
#include "Utils/KVRStringUtil.h"

#include <cmath>
#include <cstdlib>
#include <regex>
#include <vector>

namespace {

std::string textOrEmpty(const std::optional<std::string>& text) { return text.value_or(std::string()); }

// The address on one line, the way a receipt prints it.
std::string addressText(const std::shared_ptr<KVRAddressModel>& address) {
    if (!address) return {};
    std::vector<std::optional<std::string>> parts = {address->street(),       address->doorNumber(),
                                                     address->complement(),   address->neighborhood(),
                                                     address->district(),     address->city(),
                                                     address->zipCode()};
    std::string line;
    for (const auto& part : parts) {
        if (!part || part->empty()) continue;
        if (!line.empty()) line += ", ";
        line += *part;
    }
    return line;
}

// A single payment is stored with instalment amount 0 (and 1 would mean the
// same); both read "à vista", anything else is the number of instalments.
std::string instalmentText(const KVRTransactionModel& transaction) {
    int instalments = transaction.instalmentAmount();
    return instalments <= 1 ? "à vista" : KVRStringUtil::format("%i", instalments);
}

// The stored amount is in cents; the cardholder reads reais: 12345 is "123,45".
std::string amountText(const KVRTransactionModel& transaction) {
    long long cents = transaction.amount() ? std::llround(transaction.amount()->doubleValue()) : 0;
    const char* sign = cents < 0 ? "-" : "";
    cents = std::llabs(cents);
    return KVRStringUtil::format("%s%lld,%02lld", sign, cents / 100, cents % 100);
}

std::string booleanText(bool value) { return value ? "true" : "false"; }

}  // namespace

std::optional<nlohmann::json> KVRMailController::sendMailTransaction(const KVRTransactionModel& transaction,
                                                                     const std::string& to,
                                                                     bool displayCompanyInformation,
                                                                     std::optional<KVRError>* error) const {
    return post(composeTransactionDictionary(transaction, kSaleSubject, to, displayCompanyInformation), error);
}

std::optional<nlohmann::json> KVRMailController::sendMailCanceledTransaction(const KVRTransactionModel& transaction,
                                                                             const std::string& to,
                                                                             bool displayCompanyInformation,
                                                                             std::optional<KVRError>* error) const {
    return post(composeVoidTransactionDictionary(transaction, kCancellationSubject, to, displayCompanyInformation),
                error);
}

std::optional<nlohmann::json> KVRMailController::sendMailDefault(const std::string& message, const std::string& to,
                                                                 const std::string& subject,
                                                                 std::optional<KVRError>* error) const {
    return post(composeDefaultDictionary(message, subject, to), error);
}

KVRMailController::Dictionary KVRMailController::composeTransactionDictionary(const KVRTransactionModel& transaction,
                                                                              const std::string& subject,
                                                                              const std::string& to,
                                                                              bool displayCompanyInformation) const {
    return composeReceiptDictionary("transaction", transaction, subject, to, displayCompanyInformation);
}

KVRMailController::Dictionary KVRMailController::composeVoidTransactionDictionary(
    const KVRTransactionModel& transaction, const std::string& subject, const std::string& to,
    bool displayCompanyInformation) const {
    return composeReceiptDictionary("void_transaction", transaction, subject, to, displayCompanyInformation);
}

KVRMailController::Dictionary KVRMailController::composeDefaultDictionary(const std::string& message,
                                                                          const std::string& subject,
                                                                          const std::string& to) const {
    Dictionary dictionary;
    dictionary["template"] = "default";
    dictionary["mail_header"] = Dictionary{{"subject", subject}, {"to", to}};
    dictionary["body_parameters"] = Dictionary{{"body_message", message}};
    return dictionary;
}

KVRMailController::Dictionary KVRMailController::composeReceiptDictionary(const char* templateName,
                                                                          const KVRTransactionModel& transaction,
                                                                          const std::string& subject,
                                                                          const std::string& to,
                                                                          bool displayCompanyInformation) const {
    auto merchant = transaction.merchant();
    auto [date, time] = stripDateString(transaction.dateString());
    std::string aid = textOrEmpty(transaction.aid());

    Dictionary parameters;
    parameters["card_brand"] = textOrEmpty(transaction.cardBrand()) + " - " + transaction.typeString() + " " +
                               instalmentText(transaction);
    parameters["company_name"] = merchant ? textOrEmpty(merchant->merchantName()) : std::string();
    parameters["company_address"] = merchant ? addressText(merchant->address()) : std::string();
    parameters["company_tax_document_number"] = merchant ? textOrEmpty(merchant->documentNumber()) : std::string();
    parameters["transaction_aid"] = aid;
    parameters["transaction_arqc"] = textOrEmpty(transaction.arqc());
    parameters["transaction_kovra_id"] = textOrEmpty(transaction.authorisationCode());
    parameters["client_name"] = textOrEmpty(transaction.cardHolderName());
    parameters["client_masked_card_number"] = "**** **** **** " + textOrEmpty(transaction.pan());
    parameters["transaction_date"] = date;
    parameters["transaction_time"] = time;
    parameters["transaction_amount"] = amountText(transaction);
    parameters["display_aid_arqc"] = booleanText(!aid.empty());
    parameters["display_company_information"] = booleanText(displayCompanyInformation);

    Dictionary dictionary;
    dictionary["template"] = templateName;
    dictionary["mail_header"] = Dictionary{{"subject", subject}, {"to", to}};
    dictionary["body_parameters"] = std::move(parameters);
    return dictionary;
}

std::optional<std::string> KVRMailController::composeJSONFromDictionary(const Dictionary& dictionary) const {
    try {
        return dictionary.dump(4);
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;  // a text that is not UTF-8
    }
}

std::pair<std::string, std::string> KVRMailController::stripDateString(const std::string& dateString) {
    static const std::regex pattern(R"((\d{2}/\d{2}/\d{4}) - (\d{2}:\d{2}))");
    std::smatch match;
    if (!std::regex_search(dateString, match, pattern)) return {};
    return {match[1].str(), match[2].str()};
}

std::optional<nlohmann::json> KVRMailController::post(const Dictionary& dictionary,
                                                      std::optional<KVRError>* error) const {
    auto body = composeJSONFromDictionary(dictionary);
    if (!body) {
        if (error) *error = KVRErrors::emailMessageError();
        return std::nullopt;
    }
    std::optional<KVRError> transportError;
    auto reply = KVRCommunicationController::postJSON(*body, KVRServiceEndpoint::mailUrl(), &transportError);
    if (!reply && error) *error = transportError ? *transportError : KVRErrors::emailMessageError();
    return reply;
}
