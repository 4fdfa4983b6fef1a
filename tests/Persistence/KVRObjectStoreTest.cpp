#include <gtest/gtest.h>

#include <kovra/KVRAddress.h>
#include <kovra/KVRAddressModel.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionModel.h>

#include "testing/KVRStoreFileInspector.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <filesystem>
#include <ostream>

namespace {

class KVRObjectStoreTest : public KVRTestFixture {
protected:
    KVRTransactionModel::Pointer makeTransaction(const std::string& reference, int status = 2) {
        auto transaction = KVRTransactionModel::create();
        transaction->setReference(reference);
        transaction->setStatus(status);
        transaction->setAmount(KVRNumber(1000));
        return transaction;
    }
    long long storedRows(const std::string& table) { return KVRStoreFileInspector(store.storePath()).count(table); }

    KVRTemporaryStore store;
};

TEST_F(KVRObjectStoreTest, AnEmptyStoreIsMadeOnFirstUseWithWalJournal) {
    EXPECT_EQ(KVRTransactionModel::findFirst(), nullptr);
    EXPECT_TRUE(KVRMerchantModel::findAll().empty());
    EXPECT_EQ(KVRTmsTableModel::findFirstByAttribute("aidTable", "x"), nullptr);

    ASSERT_TRUE(std::filesystem::is_regular_file(store.storePath()));
    KVRStoreFileInspector file(store.storePath());
    EXPECT_EQ(file.text("PRAGMA journal_mode"), "wal");
    EXPECT_EQ(file.number("PRAGMA user_version"), 2);
    namespace fs = std::filesystem;
    EXPECT_EQ(fs::status(store.storeDirectory()).permissions(), fs::perms::owner_all);
    for (const char* suffix : {"", "-wal", "-shm"})
        EXPECT_EQ(fs::status(store.storePath() + suffix).permissions(), fs::perms::owner_read | fs::perms::owner_write)
            << suffix;
}

// Created records are found at once but written only by a save, and a save
// of any record writes every pending change.
TEST_F(KVRObjectStoreTest, ASaveWritesEveryPendingChange) {
    auto saved = makeTransaction("OLD");
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("reference", "OLD"), saved);
    EXPECT_EQ(storedRows("KVRTransactionModel"), 0);
    saved->save();
    EXPECT_FALSE(saved->isInserted());
    saved->setStatus(5);
    auto merchant = KVRMerchantModel::create();
    merchant->setKovracode("K-1");
    auto tables = KVRTmsTableModel::create();
    tables->setAidTable("<AidTbl/>");
    EXPECT_TRUE(saved->hasChanges());

    tables->save();
    EXPECT_FALSE(saved->hasChanges());
    KVRStoreFileInspector file(store.storePath());
    EXPECT_EQ(file.text("SELECT kovracode FROM KVRMerchantModel"), "K-1");
    EXPECT_EQ(file.text("SELECT aidTable FROM KVRTmsTableModel"), "<AidTbl/>");
    EXPECT_EQ(file.number("SELECT rawStatus FROM KVRTransactionModel WHERE reference = 'OLD'"), 5);
}

// Every flow sees the one live object of a row, with its unsaved changes.
TEST_F(KVRObjectStoreTest, FindsReturnTheOneLiveObjectOfARowWithItsUnsavedChanges) {
    makeTransaction("A")->save();
    store.reopen();
    auto a = KVRTransactionModel::findFirstByAttribute("reference", "A");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("rawStatus", KVRNumber(2)), a);
    auto b = makeTransaction("B", 2);
    auto c = makeTransaction("C", 2);
    c->save();
    b->setStatus(5);
    auto d = makeTransaction("D", 5);
    EXPECT_EQ(KVRTransactionModel::findAllByAttribute("rawStatus", KVRNumber(5)), (KVRTransactionModel::List{b, d}));
    EXPECT_EQ(KVRTransactionModel::findAllByAttribute("rawStatus", KVRNumber(2)), (KVRTransactionModel::List{a, c}));
    EXPECT_EQ(KVRTransactionModel::countAll(), 4);  // pending records count at once
    a->deleteRecord();
    EXPECT_EQ(KVRTransactionModel::findAll(), (KVRTransactionModel::List{b, c, d}));
    store.reopen();
    EXPECT_EQ(KVRTransactionModel::countAll(), 3);  // the delete wrote the pending ones
}

TEST_F(KVRObjectStoreTest, SavedValuesReadBackUnchanged) {
    const std::string tricky = "O'Brien \"%\" 100% _x_ ; DROP TABLE KVRTransactionModel; -- Ação São Paulo \u20ac";
    const auto date = std::chrono::system_clock::time_point(std::chrono::nanoseconds(1709658420123456789LL));
    auto transaction = KVRTransactionModel::create();
    transaction->setCardHolderName(tricky);
    transaction->setReference("");
    transaction->setAmount(KVRNumber(123456));
    transaction->setRawCapture(KVRNumber(10.5));
    transaction->setDate(date);
    transaction->setPan(std::string("12\0" "34", 5));
    transaction->save();
    store.reopen();

    auto read = KVRTransactionModel::findFirst();
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->cardHolderName(), tricky);
    EXPECT_EQ(read->reference(), std::optional<std::string>(""));
    EXPECT_EQ(read->aid(), std::nullopt);
    EXPECT_EQ(read->amount(), KVRNumber(123456));
    EXPECT_TRUE(read->amount()->isInteger());
    EXPECT_EQ(read->rawCapture()->description(), "10.5");
    EXPECT_EQ(read->date(), date);
    EXPECT_EQ(read->pan(), std::string("12\0" "34", 5));

    // Values are compared exactly: no pattern characters, no case folding.
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("cardHolderName", tricky), read);
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("cardHolderName", "%"), nullptr);
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("reference", ""), read);
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("date", date), read);
    EXPECT_EQ(storedRows("KVRTransactionModel"), 1);
}

TEST_F(KVRObjectStoreTest, UnknownAttributesAndMismatchedValuesAreRefused) {
    makeTransaction("A")->save();
    KVRLogCapture log;
    EXPECT_TRUE(KVRTransactionModel::findAllByAttribute("referense", "A").empty());
    EXPECT_TRUE(log.contains("Unknown attribute \"referense\" of KVRTransactionModel")) << log.text();
    EXPECT_TRUE(KVRTransactionModel::findAllByAttribute("reference\" = \"reference\" OR \"1", "x").empty());
    EXPECT_TRUE(KVRTransactionModel::findAllByAttribute("id", KVRNumber(1)).empty());
    EXPECT_TRUE(KVRTransactionModel::findAllByAttribute("merchant", "1").empty());
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("rawStatus", "2"), nullptr);
    EXPECT_TRUE(log.contains("Attribute \"rawStatus\" of KVRTransactionModel holds a number, not text")) << log.text();
    EXPECT_EQ(log.lines().size(), 5u) << log.text();
    EXPECT_EQ(storedRows("KVRTransactionModel"), 1);
}

TEST_F(KVRObjectStoreTest, DeleteRemovesFromFindsAndDisk) {
    auto kept = makeTransaction("KEPT");
    auto gone = makeTransaction("GONE");
    kept->save();
    gone->deleteRecord();  // never written
    EXPECT_TRUE(gone->isDeleted());
    EXPECT_EQ(storedRows("KVRTransactionModel"), 1);

    kept->deleteRecord();
    EXPECT_TRUE(kept->isDeleted());
    EXPECT_TRUE(KVRTransactionModel::findAll().empty());
    EXPECT_EQ(storedRows("KVRTransactionModel"), 0);

    // A deleted record keeps its values but is no longer saved.
    kept->setReference("AGAIN");
    kept->save();
    EXPECT_EQ(storedRows("KVRTransactionModel"), 0);
    EXPECT_EQ(kept->reference(), "AGAIN");
}

TEST_F(KVRObjectStoreTest, MerchantAndTransactionsAreNavigableBothWaysAndDeletingTheMerchantUnlinksThem) {
    auto merchant = KVRMerchantModel::create();
    auto other = KVRMerchantModel::create();
    auto first = makeTransaction("1");
    auto second = makeTransaction("2");
    merchant->setAddress(KVRAddressModel::create());
    first->setMerchant(merchant);
    second->setMerchant(merchant);
    EXPECT_EQ(merchant->transactions(), (KVRTransactionModel::List{first, second}));
    merchant->save();
    second->setMerchant(other);
    EXPECT_EQ(merchant->transactions(), KVRTransactionModel::List{first});
    merchant->save();
    store.reopen();

    auto reloaded = KVRTransactionModel::findFirstByAttribute("reference", "1");
    ASSERT_NE(reloaded->merchant(), nullptr);
    EXPECT_EQ(reloaded->merchant()->transactions(), KVRTransactionModel::List{reloaded});
    EXPECT_NE(KVRTransactionModel::findFirstByAttribute("reference", "2")->merchant(), reloaded->merchant());

    // The merchant's address goes with it; its sales stay, unlinked.
    reloaded->merchant()->deleteRecord();
    EXPECT_TRUE(KVRAddressModel::findAll().empty());
    EXPECT_EQ(reloaded->merchant(), nullptr);
    KVRStoreFileInspector file(store.storePath());
    EXPECT_EQ(file.count("KVRAddressModel"), 0);
    EXPECT_EQ(file.count("KVRTransactionModel"), 2);
    EXPECT_EQ(file.number("SELECT count(*) FROM KVRTransactionModel WHERE merchant IS NULL"), 1);
}

TEST_F(KVRObjectStoreTest, OneToOneLinksMoveRatherThanDuplicate) {
    auto pinpad = KVRPinpadModel::create();
    auto sale = makeTransaction("S1");
    auto later = makeTransaction("S2");
    sale->setPinpad(pinpad);
    sale->save();
    later->setPinpad(pinpad);
    EXPECT_EQ(sale->pinpad(), nullptr);
    EXPECT_EQ(pinpad->transaction(), later);
    pinpad->setTransaction(sale);
    EXPECT_EQ(later->pinpad(), nullptr);
    sale->save();
    store.reopen();

    auto reloadedPinpad = KVRPinpadModel::findFirst();
    ASSERT_NE(reloadedPinpad->transaction(), nullptr);
    EXPECT_EQ(reloadedPinpad->transaction()->reference(), "S1");
    EXPECT_EQ(reloadedPinpad->transaction()->pinpad(), reloadedPinpad);
}

TEST_F(KVRObjectStoreTest, AddressesMadeAsKVRAddressComeBackAsKVRAddress) {
    auto merchant = KVRMerchantModel::create();
    auto received = KVRAddress::create();
    received->setStreet("Rua Augusta");
    merchant->setAddress(received);
    KVRAddressModel::create()->setStreet("Plain");
    merchant->save();
    store.reopen();

    auto address = KVRMerchantModel::findFirst()->address();
    ASSERT_NE(std::dynamic_pointer_cast<KVRAddress>(address), nullptr);
    EXPECT_EQ(address->street(), "Rua Augusta");
    EXPECT_EQ(KVRAddressModel::findAll().size(), 2u);
    EXPECT_EQ(KVRAddressModel::countAll(), 2);  // a specialised record counts for its base
    EXPECT_EQ(KVRAddress::countAll(), 1);
    ASSERT_EQ(KVRAddress::findAll().size(), 1u);
    EXPECT_EQ(KVRAddress::findAll().front(), address);
    EXPECT_EQ(KVRAddress::findFirstByAttribute("street", "Plain"), nullptr);
}

}  // namespace
