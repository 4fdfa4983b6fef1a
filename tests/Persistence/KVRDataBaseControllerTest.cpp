#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Persistence/KVRDataBaseController.h"
#include "Platform/KVRPropertyList.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"
#include "testing/KVRWaitUntil.h"
#include "testing/KVRFiles.h"

#include <sqlite3.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace {

struct LegacyRow {
    std::optional<std::string> amount, date, status, type, instalments, idOrder, aid, arqc, recipient, reference, pan,
        flag, chname, acode, mail;
};

/// A "trans.db" written the way the earlier release wrote it.
class LegacyDatabase {
public:
    explicit LegacyDatabase(const std::string& path, const char* createStatement = KVRDataBaseController::kCreateStatement) {
        sqlite3_open(path.c_str(), &db_);
        exec(createStatement);
    }
    ~LegacyDatabase() { sqlite3_close(db_); }

    void exec(const std::string& sql) {
        char* message = nullptr;
        EXPECT_EQ(sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &message), SQLITE_OK) << (message ? message : "");
        sqlite3_free(message);
    }

    void insert(const LegacyRow& row) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(db_,
                           "INSERT INTO contacts (amount,date,status,type,instalments,idOrder,aid,arqc,Recipient,"
                           "Reference,PAN,Flag,Chname,Acode,Mail) VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
                           -1, &statement, nullptr);
        const std::optional<std::string>* values[] = {&row.amount, &row.date,      &row.status, &row.type,
                                                      &row.instalments, &row.idOrder, &row.aid, &row.arqc,
                                                      &row.recipient,   &row.reference, &row.pan, &row.flag,
                                                      &row.chname,      &row.acode,     &row.mail};
        for (int i = 0; i < 15; ++i) {
            if (*values[i]) sqlite3_bind_text(statement, i + 1, (*values[i])->c_str(), -1, SQLITE_TRANSIENT);
        }
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE);
        sqlite3_finalize(statement);
    }

private:
    sqlite3* db_ = nullptr;
};

LegacyRow approvedCredit() {
    return {"1250", "05/03/2024 - 14:07", "Transação Aprovada", "Crédito", "3", "ORDER-1", "A0000000041010",
            "9F26ARQC", "RCPT-1", "REF-1", "************0119", "MASTERCARD", "MARIA SILVA", "123456",
            "maria@example.com"};
}

LegacyRow declinedDebit() {
    return {"990", "06/03/2024 - 09:30", "Transação Negada", "Débito", "0", "ORDER-2", "A0000000043060",
            "9F26ARQ2", "RCPT-2", "REF-2", "************0027", "MAESTRO", "JOAO SOUZA", "654321", std::nullopt};
}

bool twoSavedTransactions() {
    auto transactions = KVRTransactionModel::findAll();
    if (transactions.size() != 2) return false;
    for (const auto& t : transactions) {
        if (t->hasChanges()) return false;
    }
    return true;
}

class DataBaseControllerTest : public KVRTestFixture {
protected:
    void SetUp() override { KVRApplicationInfo::setValue("Kovra Debugginho Developer", true); }

    std::string legacyPath() const { return KVRDirectories::documentsDirectory() + "/trans.db"; }
    KVRDataBaseController& controller() { return KVRDataBaseController::getsharedInstance(); }

    /// Every exchange attempt is counted and fails as if the host were down.
    void countExchanges() {
        KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
        KVRPlatformHooks::change([this](KVRPlatformHooks& hooks) {
            hooks.exchange = [this](const KVRHttpRequest&, std::optional<KVRError>& error) {
                ++exchanges_;
                error = KVRError(NSURLErrorDomain, NSURLErrorCannotConnectToHost);
                return std::optional<std::string>();
            };
        });
    }

    KVRTemporaryStore store_;
    KVRLogCapture log_;
    std::atomic<int> exchanges_{0};
};

TEST_F(DataBaseControllerTest, RowsArriveWithTheirConversionsAndAreCopiedOnlyOnce) {
    auto merchant = KVRMerchantModel::create();
    merchant->setKovracode(std::string("KOVRA-1"));
    merchant->save();
    auto existing = KVRTransactionModel::create();
    existing->setReference(std::string("REF-3"));
    existing->setStatus(2);
    existing->save();
    {
        LegacyDatabase legacy(legacyPath());
        legacy.insert(approvedCredit());
        legacy.insert(declinedDebit());
        LegacyRow duplicate = approvedCredit();
        duplicate.reference = "REF-3";
        duplicate.status = "Transação Cancelada";
        legacy.insert(duplicate);
        legacy.insert(LegacyRow{});  // every column NULL but the defaulted date
    }

    controller().migrateColumns();
    controller().migrateColumns();

    ASSERT_EQ(KVRTransactionModel::findAll().size(), 4u) << "three new rows plus the one already stored";
    auto approved = KVRTransactionModel::findFirstByAttribute("reference", "REF-1");
    ASSERT_TRUE(approved);
    EXPECT_EQ(approved->amount(), KVRNumber(1250));
    EXPECT_EQ(approved->instalmentAmount(), 3);
    EXPECT_EQ(approved->initiatorTransactionKey(), "ORDER-1");
    EXPECT_EQ(approved->aid(), "A0000000041010");
    EXPECT_EQ(approved->arqc(), "9F26ARQC");
    EXPECT_EQ(approved->type(), 0);
    EXPECT_EQ(approved->status(), 2);
    EXPECT_EQ(approved->dateString(), "05/03/2024 - 14:07");
    EXPECT_EQ(approved->receiptTransactionKey(), "RCPT-1");
    EXPECT_EQ(approved->pan(), "************0119");
    EXPECT_EQ(approved->cardBrand(), "MASTERCARD");
    EXPECT_EQ(approved->cardHolderName(), "MARIA SILVA");
    EXPECT_EQ(approved->authorisationCode(), "123456");
    EXPECT_EQ(approved->merchant(), merchant);

    auto declined = KVRTransactionModel::findFirstByAttribute("reference", "REF-2");
    ASSERT_TRUE(declined);
    EXPECT_EQ(declined->type(), 1);
    EXPECT_EQ(declined->status(), 5) << "whatever was not an approval can no longer be cancelled";
    EXPECT_EQ(declined->amount(), KVRNumber(990));

    EXPECT_EQ(existing->status(), 2) << "the stored record with the same reference is left alone";

    auto empty = KVRTransactionModel::findFirstByAttribute("reference", "");
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->amount(), KVRNumber(0));
    EXPECT_FALSE(empty->date()) << "the default timestamp is not in the legacy date format";
    EXPECT_FALSE(empty->pan());

    store_.reopen();
    EXPECT_EQ(KVRTransactionModel::findAll().size(), 4u) << "the copies were saved";
}

TEST_F(DataBaseControllerTest, AFileThatIsNotADatabaseOrLacksColumnsIsLeftAloneAndLogged) {
    const std::string garbage = "this is a text file, not a database\n";
    std::ofstream(legacyPath(), std::ios::binary) << garbage;
    controller().createDB();
    controller().migrateColumns();
    KVRDataBaseController::emptyTable();
    EXPECT_EQ(KVRFiles::read(legacyPath()), garbage);
    EXPECT_TRUE(KVRTransactionModel::findAll().empty());
    EXPECT_TRUE(log_.contains("trans.db")) << log_.text();

    std::filesystem::remove(legacyPath());
    {
        LegacyDatabase legacy(legacyPath(), "create table contacts (KeyID integer primary key, amount text, Reference text)");
        legacy.exec("INSERT INTO contacts (amount, Reference) VALUES ('100', 'REF-9')");
    }
    controller().migrateColumns();
    EXPECT_TRUE(KVRTransactionModel::findAll().empty());
    EXPECT_TRUE(log_.contains("can't read contacts")) << log_.text();

    std::filesystem::remove(legacyPath());
    controller().migrateColumns();  // no file: opening read-only does not make one
    EXPECT_FALSE(std::filesystem::exists(legacyPath()));
}

// Rows are copied only into a store without transactions, for a merchant
// that is stored or can be enrolled.
TEST_F(DataBaseControllerTest, MigrationNeedsAMerchantAndAStoreWithoutTransactions) {
    {
        LegacyDatabase legacy(legacyPath());
        legacy.insert(approvedCredit());
    }
    countExchanges();
    controller().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);  // no merchant, no register.plist
    EXPECT_EQ(exchanges_, 0);

    const std::string registerPlist = KVRDirectories::documentsDirectory() + "/register.plist";
    KVRPropertyList::writeDictionary(registerPlist, {{"kovracode", std::string("")}});
    controller().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);
    EXPECT_EQ(exchanges_, 0) << "an empty code is not enrolled";

    KVRPropertyList::writeDictionary(registerPlist, {{"kovracode", std::string("KOVRA-7")}});
    KVRTestFixture::setNetworkFlags(0);
    controller().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);
    EXPECT_EQ(exchanges_, 0) << "no network: enrolment fails before any exchange";
    EXPECT_TRUE(KVRTransactionModel::findAll().empty());
    EXPECT_TRUE(KVRMerchantModel::findAll().empty());

    KVRMerchantModel::create()->save();
    auto earlier = KVRTransactionModel::create();
    earlier->setReference(std::string("REF-0"));
    earlier->save();
    controller().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);
    EXPECT_EQ(KVRTransactionModel::findAll().size(), 1u);

    earlier->deleteRecord();
    controller().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);
    ASSERT_EQ(KVRTransactionModel::findAll().size(), 1u);
    EXPECT_EQ(KVRTransactionModel::findAll().front()->reference(), "REF-1");
}

TEST_F(DataBaseControllerTest, TheMerchantOfRegisterPlistIsEnrolledAndThenGetsTheRows) {
    {
        LegacyDatabase legacy(legacyPath());
        legacy.insert(approvedCredit());
        legacy.insert(declinedDebit());
    }
    KVRPropertyList::writeDictionary(KVRDirectories::documentsDirectory() + "/register.plist",
                                     {{"kovracode", std::string("KOVRA-7")}});
    KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
    KVRFakeExchange host;
    host.replyWith(
        "<Document><AccptrCfgtnUpd><AccptrCfgtn><DataSet><Cntt><MrchntParams><Sak>SAK-7</Sak></MrchntParams>"
        "</Cntt></DataSet></AccptrCfgtn></AccptrCfgtnUpd></Document>");

    controller().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);

    // The rows are copied on the pool once enrolment has finished.
    ASSERT_TRUE(kvrWaitUntil(twoSavedTransactions));
    auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", "KOVRA-7");
    ASSERT_TRUE(merchant);
    EXPECT_EQ(merchant->saleAffiliationKey(), "SAK-7");
    EXPECT_EQ(merchant->transactions().size(), 2u);
    EXPECT_EQ(host.count(), 1u);
}

}  // namespace
