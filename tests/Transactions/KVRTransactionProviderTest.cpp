#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionProvider.h>

#include "testing/KVRStoreFileInspector.h"
#include "Pinpad/KVRPinpadController.h"
#include "testing/KVRSaleBench.h"
#include "Utils/KVRReachability.h"

#include <condition_variable>
#include <functional>
#include <thread>

namespace {

using Bench = KVRSaleBench;

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

}  // namespace
