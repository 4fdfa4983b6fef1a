#include <gtest/gtest.h>

#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionModel.h>

#include "testing/KVRStoreFileInspector.h"
#include "testing/KVRTemporaryStore.h"

#include <future>
#include <ostream>
#include <set>

namespace {

constexpr int kSales = 100;
constexpr int kEnrolmentWorkers = 4;
constexpr int kEnrolmentRounds = 30;

// What a sale does to the store: a new record linked to the merchant and a
// PIN pad, saved, then its result saved; every fifth one is declined and
// deleted, as the provider does.
void runSale(int number) {
    auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", "K-1");
    auto sale = KVRTransactionModel::create();
    sale->setReference("S" + std::to_string(number));
    sale->setAmount(KVRNumber(100 + number));
    sale->setMerchant(merchant);
    auto pinpad = KVRPinpadModel::create();
    pinpad->setSerialNumber("PP" + std::to_string(number));
    sale->setPinpad(pinpad);
    sale->save();
    sale->setStatus(number % 5 == 0 ? 1 : 2);
    sale->save();
    if (sale->status() == 1) sale->deleteRecord();
}

// What enrolment and table download do meanwhile: update the merchant and
// the one table record, and read the transaction list.
void runEnrolment(int worker, int round) {
    auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", "K-1");
    merchant->setMerchantName("Loja " + std::to_string(worker) + "-" + std::to_string(round));
    merchant->save();
    auto tables = KVRTmsTableModel::findFirst();
    tables->setAidTable("<AidTbl>" + std::to_string(round) + "</AidTbl>");
    tables->save();
    for (const auto& sale : merchant->transactions()) (void)sale->statusString();
}

TEST(KVRStoreConcurrencyTest, SalesOnTheMainWorkerAndEnrolmentOnAPoolShareTheStoreSafely) {
    KVRTemporaryStore store;
    auto merchant = KVRMerchantModel::create();
    merchant->setKovracode("K-1");
    KVRTmsTableModel::create();
    merchant->save();

    std::promise<void> salesDone;
    KVRQueues::main().async([&] {
        for (int i = 1; i <= kSales; ++i) runSale(i);
        salesDone.set_value();
    });
    std::vector<std::promise<void>> enrolmentsDone(kEnrolmentWorkers);
    for (int worker = 0; worker < kEnrolmentWorkers; ++worker) {
        KVRQueues::global(KVRQueuePriority::High).async([&, worker] {
            for (int round = 0; round < kEnrolmentRounds; ++round) runEnrolment(worker, round);
            enrolmentsDone[worker].set_value();
        });
    }
    salesDone.get_future().get();
    for (auto& done : enrolmentsDone) done.get_future().get();
    store.reopen();

    const int approved = kSales - kSales / 5;
    auto stored = KVRMerchantModel::findFirst();
    ASSERT_NE(stored, nullptr);
    EXPECT_EQ(stored->transactions().size(), static_cast<size_t>(approved));
    std::set<std::string> references;
    for (const auto& sale : KVRTransactionModel::findAll()) {
        EXPECT_EQ(sale->status(), 2);
        ASSERT_NE(sale->pinpad(), nullptr);
        EXPECT_EQ(sale->pinpad()->serialNumber(), "PP" + sale->reference()->substr(1));
        EXPECT_EQ(sale->amount(), KVRNumber(100 + std::stoi(sale->reference()->substr(1))));
        references.insert(*sale->reference());
    }
    EXPECT_EQ(references.size(), static_cast<size_t>(approved));
    EXPECT_EQ(KVRTmsTableModel::findAll().size(), 1u);
    EXPECT_EQ(KVRPinpadModel::findAll().size(), static_cast<size_t>(kSales));
    EXPECT_EQ(KVRStoreFileInspector(store.storePath()).text("PRAGMA integrity_check"), "ok");
}

}  // namespace
