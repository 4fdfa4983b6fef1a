#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>

#include <functional>

namespace {

struct CatalogueRow {
    const char* factory;
    std::function<KVRError()> make;
    long code;
    const char* text;
};

const std::vector<CatalogueRow>& catalogue() {
    static const std::vector<CatalogueRow> rows = {
        {"genericError", KVRErrors::genericError, 101, "Unknown error occurred."},
        {"emailMessageError", KVRErrors::emailMessageError, 103, "Your message got an error."},
        {"numberOfCharactersExceeded", KVRErrors::numberOfCharactersExceeded, 105,
         "The string exceeded the number of allowed characters."},
        {"numberOfCharactersExceededForShortName", KVRErrors::numberOfCharactersExceededForShortName, 105,
         "The string for 'shortName' exceeded the number of allowed characters."},
        {"fncCommandError", KVRErrors::fncCommandError, 110,
         "FNC command returned an error. Check the transaction status."},
        {"missingKovracodeActivation", KVRErrors::missingKovracodeActivation, 201,
         "Kovracode activation is needed before running this operation."},
        {"kovracodeAlreadyActivated", KVRErrors::kovracodeAlreadyActivated, 202,
         "The current kovracode is already activated."},
        {"invalidAmount", KVRErrors::invalidAmount, 203, "Invalid value for transaction."},
        {"transactionAutoCancel", KVRErrors::transactionAutoCancel, 204, "Invalid transaction."},
        {"invalidTransaction", KVRErrors::invalidTransaction, 205, "Invalid transaction."},
        {"transactionFailed", KVRErrors::transactionFailed, 206, "Your transaction was rejected by Authorizer."},
        {"transactionTimeout", KVRErrors::transactionTimeout, 207, "Your transaction was rejected by Authorizer."},
        {"unknownKovracode", KVRErrors::unknownKovracode, 209, "Your KovraCode is incorrect or isn't in our database."},
        {"transactionAlreadyCancelled", KVRErrors::transactionAlreadyCancelled, 210,
         "This transaction is already cancelled or can not be cancelled."},
        {"transactionRejected", KVRErrors::transactionRejected, 211, "Your transaction was rejected by Authorizer."},
        {"operationCancelledByUser", KVRErrors::operationCancelledByUser, 214,
         "User pressed 'Cancel' button on Pinpad."},
        {"pinpadConnectionNotFound", KVRErrors::pinpadConnectionNotFound, 303, "Connection to Pinpad not found."},
        {"tablesNotFound", KVRErrors::tablesNotFound, 304,
         "Tables AID or CAPK not found. Download tables from server."},
        {"loadingTablesError", KVRErrors::loadingTablesError, 305, "Error while loading tables."},
        {"nullResponse", KVRErrors::nullResponse, 306, "Error reading response from server."},
        {"notConnectedToNetwork", KVRErrors::notConnectedToNetwork, 601, "You have no connection to Internet."},
    };
    return rows;
}

TEST(KVRErrors, EveryFactoryHasItsCodeTextAndOnlyTheDescriptionKey) {
    for (const auto& row : catalogue()) {
        SCOPED_TRACE(row.factory);
        KVRError error = row.make();
        EXPECT_EQ(error.domain(), KVRErrors::domain());
        EXPECT_EQ(error.domain(), std::string(KovraDomain));
        EXPECT_EQ(error.code(), row.code);
        EXPECT_EQ(error.localizedDescription(), row.text);
        ASSERT_EQ(error.userInfo().size(), 1u);
        EXPECT_EQ(error.userInfo().begin()->first, NSLocalizedDescriptionKey);
    }
}

TEST(KVRErrors, EqualityFollowsDomainAndCodeNotText) {
    EXPECT_NE(KVRErrors::transactionTimeout(), KVRErrors::transactionRejected());
    EXPECT_EQ(KVRErrors::transactionTimeout().localizedDescription(),
              KVRErrors::transactionRejected().localizedDescription());
    EXPECT_EQ(KVRErrors::numberOfCharactersExceeded(), KVRErrors::numberOfCharactersExceededForShortName());
    EXPECT_NE(KVRErrors::numberOfCharactersExceeded().localizedDescription(),
              KVRErrors::numberOfCharactersExceededForShortName().localizedDescription());
    EXPECT_NE(KVRErrors::genericError(), KVRError("NSURLErrorDomain", 101));
}

TEST(KVRErrors, CustomCodeCarriesTheGivenUserInfo) {
    KVRError error = KVRErrors::errorWithErrorCode(9999, {{NSLocalizedDescriptionKey, "x"}, {"extra", "y"}});
    EXPECT_EQ(error.code(), 9999);
    EXPECT_EQ(error.userInfo().at("extra"), "y");
    EXPECT_NE(KVRError("d", 1).localizedDescription(), "");
}

}  // namespace
