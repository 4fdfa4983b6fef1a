#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCardProvider.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRQueues.h>
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

#include <future>

#include <sqlite3.h>
#include <mutex>
#include <thread>

namespace {

using KVRPinpadReplies::gcrReply;
using KVRPinpadReplies::statusReply;

std::string repeat(const std::string& piece, size_t count) {
    std::string out;
    for (size_t i = 0; i < count; ++i) out += piece;
    return out;
}

std::thread::id mainWorkerThread() {
    std::thread::id id;
    KVRQueues::main().sync([&] { id = std::this_thread::get_id(); });
    return id;
}

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

// ---- Display ----

TEST_F(PinpadProvidersTest, DisplayLimitCountsCharactersNotBytes) {
    connect();
    struct Row {
        std::string text;
        bool accepted;
        std::string shown;
    } rows[] = {
        {repeat("A", 32), true, repeat("A", 32)},
        {repeat("A", 33), false, ""},
        {repeat("ç", 32), true, repeat("\xE7", 32)},  // Latin-1 on the wire
        {repeat("ç", 33), false, ""},
        {"PAGAMENTO 100%%", true, "PAGAMENTO 100%"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        size_t before = pinpad_.requests().size();
        KVRCompletionRecorder recorder;
        KVRDisplayProvider::displayMessage(row.text, recorder.block());
        if (!row.accepted) {
            ASSERT_EQ(recorder.count(), 1u) << "refused before the call returns";
            EXPECT_EQ(recorder.calls()[0].error->code(), 105);
            EXPECT_EQ(recorder.calls()[0].thread, std::this_thread::get_id());
            continue;
        }
        ASSERT_TRUE(recorder.waitForCalls(1));
        EXPECT_TRUE(recorder.calls()[0].success);
        auto requests = pinpad_.requests();
        ASSERT_EQ(requests.size(), before + 1);
        EXPECT_EQ(requests.back(), "DSP032" + row.shown + std::string(32 - row.shown.size(), ' '));
    }
    EXPECT_EQ(pinpad_.requests().size(), 3u) << "refused texts never reach the PIN pad";
}

TEST_F(PinpadProvidersTest, DisplayChecksLengthBeforeTheConnection) {
    KVRCompletionRecorder recorder;
    KVRDisplayProvider::displayMessage(repeat("A", 33), recorder.block());
    KVRDisplayProvider::displayMessage("OLA", recorder.block());
    ASSERT_EQ(recorder.count(), 2u);
    EXPECT_EQ(recorder.calls()[0].error->code(), 105);
    EXPECT_EQ(recorder.calls()[1].error->code(), 303);
}

TEST_F(PinpadProvidersTest, DisplayCompletesOnTheMainWorkerOrThroughTheApplicationsExecutor) {
    connect();
    KVRCompletionRecorder recorder;
    KVRDisplayProvider::displayMessage("OLA", recorder.block());
    ASSERT_TRUE(recorder.waitForCalls(1));
    EXPECT_EQ(recorder.calls()[0].thread, mainWorkerThread());

    // The application's UI loop is this test's thread: the executor hands it the completion.
    std::promise<std::function<void()>> posted;
    auto completion = posted.get_future();
    KVRQueues::setMainExecutor([&](std::function<void()> task) { posted.set_value(std::move(task)); });
    KVRDisplayProvider::displayMessage("OLA", recorder.block());
    ASSERT_EQ(completion.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(recorder.count(), 1u) << "nothing is reported until the application runs it";
    completion.get()();
    ASSERT_EQ(recorder.count(), 2u);
    EXPECT_EQ(recorder.calls()[1].thread, std::this_thread::get_id());
}

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

// ---- Card ----

TEST_F(PinpadProvidersTest, CardPanGivesTheLastFourDigits) {
    connect();
    pinpad_.setHandler([](const std::string& request) {
        return std::vector<std::string>{gcrReply(0, "5555666677778888=2812101", "5555666677778888")};
    });
    KVRCardPanRecorder recorder;
    KVRCardProvider::getCardPan(recorder.block());
    ASSERT_TRUE(recorder.waitForCalls(1));
    auto call = recorder.calls()[0];
    EXPECT_TRUE(call.success);
    EXPECT_EQ(call.digits, std::optional<std::string>("8888"));
    EXPECT_FALSE(call.error);
    EXPECT_EQ(call.thread, mainWorkerThread());
    EXPECT_EQ(pinpad_.requests().size(), 1u);
    EXPECT_EQ(KVRPinpadReplies::gcrApplicationType(pinpad_.requests()[0]), 0);
    EXPECT_FALSE(log_.contains("5555666677778888")) << "the card number stays out of the log";
}

TEST_F(PinpadProvidersTest, CardReadFailuresMapToCatalogueErrors) {
    connect();
    struct Row {
        int status;
        long code;
        size_t reads;
    } rows[] = {{20, 304, 5}, {13, 101, 1}, {1, 101, 5}, {70, 101, 5}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        size_t before = pinpad_.requests().size();
        int status = row.status;
        pinpad_.setHandler([status](const std::string& request) { return std::vector<std::string>{statusReply(request, status)}; });
        KVRCardPanRecorder recorder;
        KVRCardProvider::getCardPan(recorder.block());
        ASSERT_TRUE(recorder.waitForCalls(1));
        auto call = recorder.calls()[0];
        EXPECT_FALSE(call.success);
        EXPECT_FALSE(call.digits);
        ASSERT_TRUE(call.error);
        EXPECT_EQ(call.error->code(), row.code);
        EXPECT_EQ(pinpad_.requests().size() - before, row.reads);
    }
}

TEST_F(PinpadProvidersTest, CardWithoutPinpadFailsOnTheCallersThread) {
    KVRCardPanRecorder recorder;
    KVRCardProvider::getCardPan(recorder.block());
    auto calls = recorder.calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].error->code(), 303);
    EXPECT_EQ(calls[0].thread, std::this_thread::get_id());
}

// ---- Connection ----

TEST_F(PinpadProvidersTest, ConnectUsesTheFirstAccessoryAndCompletesBeforeReturning) {
    KVRCompletionRecorder recorder;
    KVRPinPadConnectionProvider::connectToPinpad(recorder.block());
    ASSERT_EQ(recorder.count(), 1u);
    EXPECT_EQ(recorder.calls()[0].error->code(), 303) << "no accessory";

    auto refusing = std::make_shared<KVRMemoryAccessory>("refusing", std::vector<std::string>{"one", "two", "three"});
    refusing->setRefusesSessions(true);
    KVRTestFixture::addAccessory(refusing);
    KVRTestFixture::addAccessory(pinpad_.accessory());
    KVRPinPadConnectionProvider::connectToPinpad(recorder.block());
    ASSERT_EQ(recorder.count(), 2u);
    EXPECT_EQ(recorder.calls()[1].error->code(), 303) << "every protocol of the first accessory fails";

    KVRTestFixture::removeAccessory(refusing);
    KVRPinPadConnectionProvider::connectToPinpad(recorder.block());
    ASSERT_EQ(recorder.count(), 3u);
    EXPECT_TRUE(recorder.calls()[2].success);
    EXPECT_EQ(recorder.calls()[2].thread, std::this_thread::get_id());
    EXPECT_EQ(KVRBluetoothConnection::sharedController()->accessory(), pinpad_.accessory());
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
