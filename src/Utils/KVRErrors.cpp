#include <kovra/KVRErrors.h>

const char* const KovraDomain = "br.com.kovra.sdk";

namespace {
KVRError described(long code, const char* text) {
    return KVRErrors::errorWithErrorCode(code, {{NSLocalizedDescriptionKey, text}});
}
}  // namespace

std::string KVRErrors::domain() { return KovraDomain; }

KVRError KVRErrors::errorWithErrorCode(long code, const KVRError::UserInfo& userInfo) {
    return KVRError(domain(), code, userInfo);
}

KVRError KVRErrors::genericError() { return described(101, "Unknown error occurred."); }
KVRError KVRErrors::emailMessageError() { return described(103, "Your message got an error."); }
KVRError KVRErrors::numberOfCharactersExceeded() {
    return described(105, "The string exceeded the number of allowed characters.");
}
KVRError KVRErrors::numberOfCharactersExceededForShortName() {
    return described(105, "The string for 'shortName' exceeded the number of allowed characters.");
}
KVRError KVRErrors::fncCommandError() {
    return described(110, "FNC command returned an error. Check the transaction status.");
}
KVRError KVRErrors::missingKovracodeActivation() {
    return described(201, "Kovracode activation is needed before running this operation.");
}
KVRError KVRErrors::kovracodeAlreadyActivated() {
    return described(202, "The current kovracode is already activated.");
}
KVRError KVRErrors::invalidAmount() { return described(203, "Invalid value for transaction."); }
KVRError KVRErrors::transactionAutoCancel() { return described(204, "Invalid transaction."); }
KVRError KVRErrors::invalidTransaction() { return described(205, "Invalid transaction."); }
KVRError KVRErrors::transactionFailed() {
    return described(206, "Your transaction was rejected by Authorizer.");
}
KVRError KVRErrors::transactionTimeout() {
    return described(207, "Your transaction was rejected by Authorizer.");
}
KVRError KVRErrors::unknownKovracode() {
    return described(209, "Your KovraCode is incorrect or isn't in our database.");
}
KVRError KVRErrors::transactionAlreadyCancelled() {
    return described(210, "This transaction is already cancelled or can not be cancelled.");
}
KVRError KVRErrors::transactionRejected() {
    return described(211, "Your transaction was rejected by Authorizer.");
}
KVRError KVRErrors::operationCancelledByUser() {
    return described(214, "User pressed 'Cancel' button on Pinpad.");
}
KVRError KVRErrors::pinpadConnectionNotFound() { return described(303, "Connection to Pinpad not found."); }
KVRError KVRErrors::tablesNotFound() {
    return described(304, "Tables AID or CAPK not found. Download tables from server.");
}
KVRError KVRErrors::loadingTablesError() { return described(305, "Error while loading tables."); }
KVRError KVRErrors::nullResponse() { return described(306, "Error reading response from server."); }
KVRError KVRErrors::notConnectedToNetwork() {
    return described(601, "You have no connection to Internet.");
}
