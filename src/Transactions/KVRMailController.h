#pragma once

#include <kovra/KVRError.h>

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <utility>

class KVRTransactionModel;

/// Builds the mail service's requests (a server-side template, its mail
/// header and its parameters) and posts them to the mail host's "/send".
/// The library never sends mail itself.
class KVRMailController {
public:
    /// Members keep the order they are added in, so the bodies read like the
    /// receipt they describe.
    using Dictionary = nlohmann::ordered_json;

    static constexpr const char* kSaleSubject = "Comprovante de transação";
    static constexpr const char* kCancellationSubject = "Comprovante de cancelamento";
    static constexpr const char* kFeedbackSubject = "Feedback - iOS";

    // Each posts one request and returns the service's reply; nothing, with
    // `error` set when given, when the body cannot be built, the exchange
    // fails or the reply is not JSON.
    std::optional<nlohmann::json> sendMailTransaction(const KVRTransactionModel& transaction, const std::string& to,
                                                      bool displayCompanyInformation,
                                                      std::optional<KVRError>* error = nullptr) const;
    std::optional<nlohmann::json> sendMailCanceledTransaction(const KVRTransactionModel& transaction,
                                                              const std::string& to, bool displayCompanyInformation,
                                                              std::optional<KVRError>* error = nullptr) const;
    std::optional<nlohmann::json> sendMailDefault(const std::string& message, const std::string& to,
                                                  const std::string& subject,
                                                  std::optional<KVRError>* error = nullptr) const;

    Dictionary composeTransactionDictionary(const KVRTransactionModel& transaction, const std::string& subject,
                                            const std::string& to, bool displayCompanyInformation) const;
    Dictionary composeVoidTransactionDictionary(const KVRTransactionModel& transaction, const std::string& subject,
                                                const std::string& to, bool displayCompanyInformation) const;
    Dictionary composeDefaultDictionary(const std::string& message, const std::string& subject,
                                        const std::string& to) const;

    /// Pretty-printed JSON, or nothing when the object cannot be serialised
    /// (a text that is not UTF-8).
    std::optional<std::string> composeJSONFromDictionary(const Dictionary& dictionary) const;

    /// Date and time of a "dd/MM/yyyy - HH:mm" text; two empty texts when it
    /// has no such date.
    static std::pair<std::string, std::string> stripDateString(const std::string& dateString);

private:
    Dictionary composeReceiptDictionary(const char* templateName, const KVRTransactionModel& transaction,
                                        const std::string& subject, const std::string& to,
                                        bool displayCompanyInformation) const;
    std::optional<nlohmann::json> post(const Dictionary& dictionary, std::optional<KVRError>* error) const;
};
