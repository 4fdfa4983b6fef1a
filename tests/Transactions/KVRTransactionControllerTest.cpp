#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Transactions/KVRTransactionController.h"
#include "Utils/KVRClock.h"
#include "testing/KVREmvTableSamples.h"
#include "testing/KVRLocalTime.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

namespace {

KVRGcrCommandResponse cardWithRecord(int recidx) {
    KVRGcrCommandResponse gcr;
    gcr.recidx = recidx;
    return gcr;
}

TEST(TransactionControllerTest, ArqcIsTheValueOfTag9F26) {
    struct Row {
        const char* name;
        std::string emv;
        std::optional<std::string> arqc;
    } rows[] = {
        {"alone", "9F2608AABBCCDDEEFF0011", "AABBCCDDEEFF0011"},
        {"after one-byte tags", "8A0230309102ABCD9F26081122334455667788", "1122334455667788"},
        {"after other two-byte tags", "5F2A0209869F02060000000010009F2602BEEF", "BEEF"},
        {"after a long-form length", "9181" "02" "ABCD" "9F2601EE", "EE"},
        {"after a long form above 127 bytes",
         "7281" "80" + std::string(256, 'A') + "9F260112", "12"},
        {"lower-case text", "9f2602abcd", "ABCD"},
        {"empty value", "9F2600", ""},
        {"the last of two", "9F2601019F260102", "02"},
        {"absent", "8A023030910A0102030405060708090A", std::nullopt},
        {"empty text", "", std::nullopt},
        {"value cut short", "9F2608AABB", std::nullopt},
        {"cut inside a two-byte tag", "8A0230309F", std::nullopt},
        {"cut before the length", "8A0230309F26", std::nullopt},
        {"cut inside a long form", "9F2681", std::nullopt},
        {"odd number of digits", "9F2602ABC", std::nullopt},
        {"not hexadecimal before it", "8A02ZZ9F2601AA", std::nullopt},
        {"not hexadecimal inside it", "9F2602ABZZ", std::nullopt},
        {"a length beyond the text", "9110" "9F2601AA", std::nullopt},
        {"found before a broken tail", "9F2601AA" "8A", "AA"},
    };
    KVRTransactionController controller;
    for (const auto& row : rows) EXPECT_EQ(controller.getArqcWithEmv(row.emv), row.arqc) << row.name;
}

TEST(TransactionControllerTest, BrandFollowsTheTableRecord) {
    KVRTransactionController controller;
    struct Row {
        int recidx;
        const char* brand;
    } rows[] = {{0, "Visa"}, {1, "Visa"}, {3, "Visa"}, {4, "MasterCard"}, {8, "MasterCard"}};
    for (const auto& row : rows) EXPECT_EQ(controller.getFlagWithGcrResponse(cardWithRecord(row.recidx)), row.brand);
}

TEST(TransactionControllerTest, AidComesFromTheStoredTableRecordOfTheCard) {
    KVRTemporaryStore store;
    KVRLogCapture log;
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    KVRTransactionController controller;
    EXPECT_EQ(controller.getTransactionAidWithGcrResponse(cardWithRecord(1)), "") << "no tables downloaded";
    EXPECT_TRUE(log.contains("Error - TMS Table not downloaded."));

    auto tables = KVRTmsTableModel::create();
    KVREmvTableSamples::Aid padded;
    padded.recidx = "07";
    padded.aid = "A0000000041010";
    tables->setAidTable(KVREmvTableSamples::aidTable({KVREmvTableSamples::Aid{}, padded}));
    tables->save();
    EXPECT_EQ(controller.getTransactionAidWithGcrResponse(cardWithRecord(1)), "A0000000031010");
    EXPECT_EQ(controller.getTransactionAidWithGcrResponse(cardWithRecord(7)), "A0000000041010")
        << "the record number is read as an integer";
    EXPECT_EQ(controller.getTransactionAidWithGcrResponse(cardWithRecord(2)), std::nullopt);

    tables->setAidTable("<AidTbl><Aid>");
    tables->save();
    EXPECT_EQ(controller.getTransactionAidWithGcrResponse(cardWithRecord(1)), std::nullopt);
}

class InitiatorKeyTest : public KVRTestFixture {
protected:
    void SetUp() override {
        auto now = kvrtest::localTime(2031, 7, 15, 12);
        KVRTestFixture::setClock([now] { return now; });
        KVRApplicationInfo::setValue("CFBundleVersion", std::string("2.10.3"));
    }
    static void storeTransactions(int count) {
        for (int i = 0; i < count; ++i) KVRTransactionModel::create();
    }
    KVRTemporaryStore store_;
    KVRTransactionController controller_;
};

// Serial number without blanks, year, day of the year, the count of stored
// sales (four digits or more), four characters of the vendor identifier and
// the bundle version without dots.
TEST_F(InitiatorKeyTest, SerialYearDayCountVendorAndVersion) {
    std::string vendor = KVRDirectories::vendorIdentifier().substr(24, 4);
    struct Row {
        int transactions;
        const char* serial;
        std::string key;
        bool version = true;
    } rows[] = {
        {0, "SN 4400 0077", "SN44000077-3110000" + vendor + "2103"},
        {7, "  ABC123  ", "ABC123-3110007" + vendor + "2103"},
        {1000, "X", "X-3111000" + vendor + "2103"},
        {10000, "S1", "S1-31110000" + vendor + "2103"},
        {10000, "S1", "S1-31110000" + vendor, false},
    };
    int stored = 0;
    for (const auto& row : rows) {
        storeTransactions(row.transactions - stored);
        stored = row.transactions;
        if (!row.version) KVRApplicationInfo::removeValue("CFBundleVersion");
        EXPECT_EQ(controller_.generateInitiatorTransactionKeyWithSerialNumber(row.serial), row.key);
    }
}

}  // namespace
