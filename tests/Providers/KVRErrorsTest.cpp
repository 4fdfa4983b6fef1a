#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>

#include <functional>

namespace {

// The codes and texts applications show and compare; written once here.
TEST(KVRErrors, EveryFactoryHasItsCodeAndText) {
    struct Row {
        std::function<KVRError()> make;
        long code;
        const char* text;
    } rows[] = {
        {KVRErrors::genericError, 101, "Unknown error occurred."},
        {KVRErrors::emailMessageError, 103, "Your message got an error."},
        {KVRErrors::numberOfCharactersExceeded, 105, "The string exceeded the number of allowed characters."},
        {KVRErrors::numberOfCharactersExceededForShortName, 105,
         "The string for 'shortName' exceeded the number of allowed characters."},
        {KVRErrors::fncCommandError, 110, "FNC command returned an error. Check the transaction status."},
        {KVRErrors::missingKovracodeActivation, 201, "Kovracode activation is needed before running this operation."},
        {KVRErrors::kovracodeAlreadyActivated, 202, "The current kovracode is already activated."},
        {KVRErrors::invalidAmount, 203, "Invalid value for transaction."},
        {KVRErrors::transactionAutoCancel, 204, "Invalid transaction."},
        {KVRErrors::invalidTransaction, 205, "Invalid transaction."},
        {KVRErrors::transactionFailed, 206, "Your transaction was rejected by Authorizer."},
        {KVRErrors::transactionTimeout, 207, "Your transaction was rejected by Authorizer."},
        {KVRErrors::unknownKovracode, 209, "Your KovraCode is incorrect or isn't in our database."},
        {KVRErrors::transactionAlreadyCancelled, 210, "This transaction is already cancelled or can not be cancelled."},
        {KVRErrors::transactionRejected, 211, "Your transaction was rejected by Authorizer."},
        {KVRErrors::operationCancelledByUser, 214, "User pressed 'Cancel' button on Pinpad."},
        {KVRErrors::pinpadConnectionNotFound, 303, "Connection to Pinpad not found."},
        {KVRErrors::tablesNotFound, 304, "Tables AID or CAPK not found. Download tables from server."},
        {KVRErrors::loadingTablesError, 305, "Error while loading tables."},
        {KVRErrors::nullResponse, 306, "Error reading response from server."},
        {KVRErrors::notConnectedToNetwork, 601, "You have no connection to Internet."},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        KVRError error = row.make();
        EXPECT_EQ(error.domain(), std::string(KovraDomain));
        EXPECT_EQ(error.code(), row.code);
        EXPECT_EQ(error.localizedDescription(), row.text);
        EXPECT_EQ(error.userInfo().size(), 1u) << "only the description";
    }
    // Errors are equal by domain and code, whatever their texts.
    EXPECT_EQ(KVRErrors::numberOfCharactersExceeded(), KVRErrors::numberOfCharactersExceededForShortName());
    EXPECT_NE(KVRErrors::genericError(), KVRError("NSURLErrorDomain", 101));
}

}  // namespace
