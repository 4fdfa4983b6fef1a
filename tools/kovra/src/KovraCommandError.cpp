#include "KovraCommandError.h"

#include <kovra/KVRErrors.h>

#include <algorithm>
#include <vector>

KovraCommandError::KovraCommandError(std::string line, int exitCode, std::string domain, long code,
                                     std::string message)
    : std::runtime_error(std::move(line)),
      exitCode_(exitCode),
      domain_(std::move(domain)),
      code_(code),
      message_(std::move(message)) {}

int KovraCommandError::exitCodeOf(const KVRError& error) {
    // Declined: the acquirer refused the sale or the KovraCode, the card was
    // not accepted, or the cardholder cancelled on the PIN pad.
    static const std::vector<KVRError> declined = {KVRErrors::transactionRejected(), KVRErrors::invalidTransaction(),
                                                   KVRErrors::unknownKovracode(),
                                                   KVRErrors::operationCancelledByUser()};
    // Refused before anything was tried: the input, or what the state allows.
    static const std::vector<KVRError> refused = {KVRErrors::invalidAmount(), KVRErrors::numberOfCharactersExceeded(),
                                                  KVRErrors::missingKovracodeActivation(),
                                                  KVRErrors::kovracodeAlreadyActivated(),
                                                  KVRErrors::transactionAlreadyCancelled()};
    auto among = [&error](const std::vector<KVRError>& errors) {
        return std::find(errors.begin(), errors.end(), error) != errors.end();
    };
    if (among(declined)) return kDeclined;
    if (among(refused)) return kUsage;
    // Everything else went wrong on the way: network and transport errors,
    // unreadable or late answers, the PIN pad, the tables, the mail service.
    return kTechnical;
}

KovraCommandError KovraCommandError::fromLibrary(const KVRError& error) {
    return KovraCommandError("error " + std::to_string(error.code()) + ": " + error.localizedDescription(),
                             exitCodeOf(error), error.domain(), error.code(), error.localizedDescription());
}

KovraCommandError KovraCommandError::failure(const std::string& message) {
    return KovraCommandError("kovra: " + message, kTechnical, "kovra", kTechnical, message);
}

KovraCommandError KovraCommandError::usage(const std::string& message) {
    return KovraCommandError("kovra: " + message, kUsage, "usage", kUsage, message);
}

nlohmann::ordered_json KovraCommandError::toJson() const {
    nlohmann::ordered_json document = {{"error", {{"code", code_}, {"domain", domain_}, {"message", message_}}}};
    document.update(extra_);
    return document;
}

KovraCommandError& KovraCommandError::with(const std::string& key, nlohmann::ordered_json value) {
    extra_[key] = std::move(value);
    return *this;
}
