#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCardProvider.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVRDataBaseController.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "testing/KVRCardPanRecorder.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRScriptedPinpad.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <sqlite3.h>

namespace {

using KVRPinpadReplies::gcrReply;
using KVRPinpadReplies::statusReply;

class PinpadProvidersTest : public KVRTestFixture {
protected:
    void connect() {
        ASSERT_TRUE(pinpad_.connectSharedLink());
        KVRPinpadController::sharedController().setConnection(KVRBluetoothConnection::sharedController());
    }

    KVRTemporaryStore store_;
    KVRLogCapture log_;
    KVRScriptedPinpad pinpad_;
};

TEST_F(PinpadProvidersTest, DisplayOverASilentLinkReportsInsteadOfHanging) {
    connect();
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 0.2);
    pinpad_.setHandler([](const std::string&) { return std::vector<std::string>{}; });
    KVRCompletionRecorder recorder;
    KVRDisplayProvider::displayMessage("OLA", recorder.block());
    ASSERT_TRUE(recorder.waitForCalls(1));
    EXPECT_FALSE(recorder.calls()[0].success);
    EXPECT_EQ(recorder.calls()[0].error->code(), 101);
}

// The PIN pad's return codes of a card read, as the application hears them.
TEST_F(PinpadProvidersTest, CardReadGivesTheLastFourDigitsOrTheCatalogueError) {
    connect();
    struct Row {
        int status;
        std::optional<std::string> digits;
        long code;
        size_t reads;
    } rows[] = {{0, "8888", 0, 1}, {20, {}, 304, 5}, {13, {}, 101, 1}, {1, {}, 101, 5}, {70, {}, 101, 5}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        size_t before = pinpad_.requests().size();
        pinpad_.setHandler([status = row.status](const std::string& request) {
            return std::vector<std::string>{status ? statusReply(request, status)
                                                   : gcrReply(0, "5555666677778888=2812101", "5555666677778888")};
        });
        KVRCardPanRecorder recorder;
        KVRCardProvider::getCardPan(recorder.block());
        ASSERT_TRUE(recorder.waitForCalls(1));
        auto call = recorder.calls()[0];
        EXPECT_EQ(call.success, row.digits.has_value());
        EXPECT_EQ(call.digits, row.digits);
        EXPECT_EQ(call.error ? call.error->code() : 0, row.code);
        EXPECT_EQ(pinpad_.requests().size() - before, row.reads);
    }
    EXPECT_EQ(KVRPinpadReplies::gcrApplicationType(pinpad_.requests()[0]), 0);
    EXPECT_FALSE(log_.contains("5555666677778888")) << "the card number stays out of the log";
}

TEST_F(PinpadProvidersTest, ConnectBringsTheLegacyTransactionsInFirstEvenWithoutAPinpad) {
    auto merchant = KVRMerchantModel::create();
    merchant->setKovracode(std::string("KOVRA-0001"));
    merchant->save();
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open((KVRDirectories::documentsDirectory() + "/trans.db").c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, KVRDataBaseController::kCreateStatement, nullptr, nullptr, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db, "INSERT INTO contacts (amount,status,type,Reference) VALUES ('1250','Transação Aprovada','Crédito','REF-1')",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);

    KVRCompletionRecorder recorder;
    KVRPinPadConnectionProvider::connectToPinpad(recorder.block());
    ASSERT_EQ(recorder.count(), 1u);
    EXPECT_EQ(recorder.calls()[0].error->code(), 303);
    auto migrated = KVRTransactionModel::findFirstByAttribute("reference", "REF-1");
    ASSERT_TRUE(migrated);
    EXPECT_EQ(migrated->amount(), std::optional<KVRNumber>(1250));
}

}  // namespace
