#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionProvider.h>

#include "Persistence/KVRStoreFileInspector.h"
#include "Pinpad/KVRPinpadController.h"
#include "Transactions/KVRSaleBench.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRTestFixture.h"

#include <condition_variable>
#include <functional>
#include <thread>

namespace {

using Bench = KVRSaleBench;

struct EntryRow {
    const char* name;
    std::function<void(Bench&, KVRTransactionModel&)> arrange;
    KVRError error;
};

TEST(TransactionProviderTest, EntryChecksFailInOrderAtOnceAndSendNothing) {
    auto networkDown = [](Bench&) { KVRTestFixture::setNetworkFlags(0); };
    auto noMerchant = [](Bench&) { KVRMerchantModel::findFirst()->deleteRecord(); };
    auto noPinpad = [](Bench&) { KVRPinpadController::sharedController().setConnection(nullptr); };
    EntryRow rows[] = {
        {"amount 9", [](Bench&, KVRTransactionModel& t) { t.setAmount(KVRNumber(9LL)); }, KVRErrors::invalidAmount()},
        {"negative amount", [](Bench&, KVRTransactionModel& t) { t.setAmount(KVRNumber(-1000LL)); },
         KVRErrors::invalidAmount()},
        {"amount 9.99", [](Bench&, KVRTransactionModel& t) { t.setAmount(KVRNumber(9.99)); }, KVRErrors::invalidAmount()},
        {"13-digit amount, before the card is read",
         [](Bench&, KVRTransactionModel& t) { t.setAmount(KVRNumber(1000000000000LL)); }, KVRErrors::invalidAmount()},
        {"no amount", [](Bench&, KVRTransactionModel& t) { t.setAmount(std::nullopt); }, KVRErrors::invalidAmount()},
        {"amount before short name",
         [](Bench&, KVRTransactionModel& t) {
             t.setAmount(KVRNumber(9LL));
             t.setShortName("PADARIA DO BAIRRO");
         },
         KVRErrors::invalidAmount()},
        {"17-character short name", [](Bench&, KVRTransactionModel& t) { t.setShortName("PADARIA DO BAIRRO"); },
         KVRErrors::numberOfCharactersExceededForShortName()},
        {"short name before network",
         [&](Bench& b, KVRTransactionModel& t) {
             t.setShortName("PADARIA DO BAIRRO");
             networkDown(b);
         },
         KVRErrors::numberOfCharactersExceededForShortName()},
        {"16-character short name passes, network down",
         [&](Bench& b, KVRTransactionModel& t) {
             t.setShortName("PADARIA DO BAIRR");
             networkDown(b);
         },
         KVRErrors::notConnectedToNetwork()},
        {"16 accented characters pass, network down",
         [&](Bench& b, KVRTransactionModel& t) {
             t.setShortName("Padaria São João");
             networkDown(b);
         },
         KVRErrors::notConnectedToNetwork()},
        {"network before enrolment and PIN pad",
         [&](Bench& b, KVRTransactionModel&) {
             networkDown(b);
             noMerchant(b);
             noPinpad(b);
         },
         KVRErrors::notConnectedToNetwork()},
        {"enrolment before PIN pad",
         [&](Bench& b, KVRTransactionModel&) {
             noMerchant(b);
             noPinpad(b);
         },
         KVRErrors::missingKovracodeActivation()},
        {"no PIN pad", [&](Bench& b, KVRTransactionModel&) { noPinpad(b); }, KVRErrors::pinpadConnectionNotFound()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Bench bench;
        auto sale = Bench::newSale(1000);
        row.arrange(bench, *sale);
        std::vector<KVRCompletionRecorder::Call> calls;
        KVRTransactionProvider::sendTransaction(sale, [&calls](bool success, std::optional<KVRError> error) {
            calls.push_back({success, std::move(error), std::this_thread::get_id()});
        });
        ASSERT_EQ(calls.size(), 1u) << "reported before the call returned";
        EXPECT_FALSE(calls[0].success);
        EXPECT_EQ(calls[0].error, row.error);
        EXPECT_EQ(calls[0].error->localizedDescription(), row.error.localizedDescription());
        EXPECT_EQ(calls[0].thread, std::this_thread::get_id());
        EXPECT_TRUE(bench.pinpad().requests().empty());
        EXPECT_TRUE(bench.hostRequests("").empty());
    }
}

TEST(TransactionProviderTest, InstalmentCodesTypeAndAmountFillTheRecordAndTheIdentifierIsDropped) {
    struct Row {
        unsigned code;
        int instalments;
        int instalmentType;
        unsigned type;
        bool orderVariant;
    } rows[] = {
        {0, 0, 0, 0, false}, {1, 2, 1, 1, true}, {11, 12, 1, 0, false}, {12, 2, 2, 1, true}, {15, 5, 2, 0, false},
    };
    const std::string identifier = "ORDER-7A1C-99";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        Bench bench;
        KVRTransactionProvider provider;
        KVRCompletionRecorder recorder;
        if (row.orderVariant) {
            provider.sendTransactionWithValueOrderIdentification(1234, row.type, row.code, identifier, recorder.block());
        } else {
            provider.sendTransactionWithValue(1234, row.type, row.code, identifier, recorder.block());
        }
        ASSERT_TRUE(recorder.waitForCalls(1));
        EXPECT_TRUE(recorder.calls()[0].success);

        auto stored = KVRTransactionModel::findAll();
        ASSERT_EQ(stored.size(), 1u);
        EXPECT_EQ(stored[0]->amount(), KVRNumber(1234LL));
        EXPECT_EQ(stored[0]->type(), static_cast<int>(row.type));
        EXPECT_EQ(stored[0]->instalmentAmount(), row.instalments);
        EXPECT_EQ(stored[0]->instalmentType(), row.instalmentType);
        auto requests = bench.hostRequests("/Authorize");
        ASSERT_EQ(requests.size(), 1u);
        EXPECT_NE(requests[0].body.find("<TtlNbOfPmts>" + std::to_string(row.instalments) + "</TtlNbOfPmts>"),
                  std::string::npos);
        EXPECT_EQ(requests[0].body.find(identifier), std::string::npos) << "never sent";
        KVRStoreFileInspector file(bench.store().storePath());
        EXPECT_EQ(file.count("KVRTransactionModel"), 1);
        for (const char* column : {"aid", "arqc", "authorisationCode", "cardHolderName", "cardBrand",
                                   "initiatorTransactionKey", "pan", "receiptTransactionKey", "reference", "shortName"}) {
            EXPECT_EQ(file.number(std::string("SELECT count(*) FROM KVRTransactionModel WHERE \"") + column +
                                  "\" LIKE '%" + identifier + "%'"),
                      0)
                << "never stored: " << column;
        }
    }
}

TEST(TransactionProviderTest, ARefusedSaleLeavesNoNewRecordBehind) {
    Bench bench;
    KVRTransactionProvider provider;
    KVRCompletionRecorder refused;
    provider.sendTransactionWithValue(9, 0, 0, "", refused.block());
    ASSERT_EQ(refused.count(), 1u);
    EXPECT_TRUE(KVRTransactionModel::findAll().empty());

    KVRCompletionRecorder sold;
    provider.sendTransactionWithValue(10, 0, 0, "", sold.block());
    ASSERT_TRUE(sold.waitForCalls(1));
    EXPECT_TRUE(sold.calls()[0].success);
    KVRStoreFileInspector file(bench.store().storePath());
    EXPECT_EQ(file.count("KVRTransactionModel"), 1) << "only the sale that ran";
}

TEST(TransactionProviderTest, CompletionsArriveOnTheMainWorkerOrThroughTheApplicationsExecutor) {
    Bench bench;
    bool onMainWorker = false;
    auto recorder = std::make_shared<KVRCompletionRecorder>();
    auto block = recorder->block();
    KVRTransactionProvider::sendTransaction(Bench::newSale(1000), [&onMainWorker, block](bool s, std::optional<KVRError> e) {
        onMainWorker = KVRQueues::isMainWorker();
        block(s, std::move(e));
    });
    ASSERT_TRUE(recorder->waitForCalls(1));
    EXPECT_TRUE(onMainWorker);

    // An application with its own main loop gets the completion posted there.
    std::mutex mutex;
    std::condition_variable posted;
    std::vector<std::function<void()>> loop;
    KVRQueues::setMainExecutor([&](std::function<void()> work) {
        std::lock_guard lock(mutex);
        loop.push_back(std::move(work));
        posted.notify_all();
    });
    KVRCompletionRecorder second;
    KVRTransactionProvider::sendTransaction(Bench::newSale(1000), second.block());
    std::function<void()> work;
    {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(posted.wait_for(lock, std::chrono::seconds(20), [&] { return !loop.empty(); }));
        work = loop.front();
    }
    EXPECT_EQ(second.count(), 0u) << "not before the application runs it";
    work();
    ASSERT_EQ(second.count(), 1u);
    EXPECT_EQ(second.calls()[0].thread, std::this_thread::get_id());
    EXPECT_TRUE(second.calls()[0].success);
}

}  // namespace
