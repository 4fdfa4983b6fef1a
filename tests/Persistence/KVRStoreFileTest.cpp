#include <gtest/gtest.h>

#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVRPersistenceController.h"
#include "testing/KVRStoreFileInspector.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"
#include "testing/KVRFiles.h"

#include <sqlite3.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

void writeFile(const std::string& path, const std::string& bytes) {
    fs::create_directories(fs::path(path).parent_path());
    KVRFiles::write(path, bytes);
}

/// Makes a store file the way another version of the library would have.
void makeDatabase(const std::string& path, const std::string& sql) {
    fs::create_directories(fs::path(path).parent_path());
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    char* message = nullptr;
    int result = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &message);
    std::string error = message ? message : "";
    sqlite3_free(message);
    sqlite3_close(db);
    ASSERT_EQ(result, SQLITE_OK) << error;
}

std::vector<fs::path> movedAside(const std::string& directory) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(directory)) {
        if (entry.path().filename().string().rfind("KovraSDK.sqlite.corrupt-", 0) == 0) found.push_back(entry.path());
    }
    return found;
}

class KVRStoreFileTest : public KVRTestFixture {
protected:
    KVRTemporaryStore store;
};

// Killed right after a save, nothing saved is lost; after a clean exit the
// store is checkpointed and closed, so the database file alone holds it all.
TEST_F(KVRStoreFileTest, SavesSurviveAKillAndACleanExitLeavesOneFile) {
    for (bool killed : {true, false}) {
        SCOPED_TRACE(killed ? "killed" : "clean exit");
        store.reopen();  // the child must not inherit an open connection
        fs::remove_all(store.storeDirectory());
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(ready[0]);
            auto merchant = KVRMerchantModel::create();
            merchant->setKovracode("K-77");
            for (int i = 0; i < 10; ++i) {
                auto sale = KVRTransactionModel::create();
                sale->setReference("R" + std::to_string(i));
                sale->setMerchant(merchant);
                sale->save();
            }
            auto last = KVRTransactionModel::findFirstByAttribute("reference", "R9");
            last->setStatus(2);
            last->save();
            if (!killed) exit(0);
            char done = 1;
            if (write(ready[1], &done, 1) != 1) _exit(1);
            for (;;) pause();
        }
        close(ready[1]);
        char done = 0;
        if (killed) {
            ASSERT_EQ(read(ready[0], &done, 1), 1);
            kill(child, SIGKILL);
        }
        close(ready[0]);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_EQ(WIFSIGNALED(status), killed);
        if (!killed) {
            EXPECT_FALSE(fs::exists(store.storePath() + "-wal") && fs::file_size(store.storePath() + "-wal") > 0);
            fs::copy_file(store.storePath(), store.storePath() + ".alone");
            EXPECT_EQ(KVRStoreFileInspector(store.storePath() + ".alone").count("KVRTransactionModel"), 10);
        }

        auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", "K-77");
        ASSERT_NE(merchant, nullptr);
        EXPECT_EQ(merchant->transactions().size(), 10u);
        auto last = KVRTransactionModel::findFirstByAttribute("reference", "R9");
        ASSERT_NE(last, nullptr);
        EXPECT_EQ(last->statusString(), "Transação Aprovada");
    }
}

TEST_F(KVRStoreFileTest, AnUnreadableStoreIsMovedAsideAndANewOneMade) {
    struct Case {
        std::string name;
        std::function<void()> damage;
    };
    const std::vector<Case> cases = {
        {"text file", [&] { writeFile(store.storePath(), std::string(5000, 'x')); }},
        {"damaged pages",
         [&] {
             KVRTransactionModel::create()->save();
             store.reopen();
             std::fstream file(store.storePath(), std::ios::binary | std::ios::in | std::ios::out);
             ASSERT_TRUE(file.is_open());
             file.seekp(4096);
             file << std::string(8192, '\x5a');
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        store.reopen();
        fs::remove_all(store.storeDirectory());
        c.damage();
        std::string damaged = KVRFiles::read(store.storePath());
        KVRLogCapture log;
        store.reopen();

        auto sale = KVRTransactionModel::create();
        sale->setReference("after");
        sale->save();
        store.reopen();
        EXPECT_EQ(KVRTransactionModel::findFirst()->reference(), "after");
        EXPECT_EQ(KVRTransactionModel::findAll().size(), 1u);
        EXPECT_TRUE(log.contains("could not be read")) << log.text();
        auto aside = movedAside(store.storeDirectory());
        ASSERT_EQ(aside.size(), 1u);
        EXPECT_TRUE(log.contains(aside.front().string())) << log.text();
        EXPECT_EQ(KVRFiles::read(aside.front().string()), damaged);
    }
}

TEST_F(KVRStoreFileTest, AStoreOfANewerVersionIsLeftUntouchedAndNotUsed) {
    makeDatabase(store.storePath(),
                 "CREATE TABLE KVRTransactionModel (id INTEGER PRIMARY KEY, entity TEXT, reference TEXT, future TEXT);"
                 "INSERT INTO KVRTransactionModel (entity, reference) VALUES ('KVRTransactionModel', 'FROM-THE-FUTURE');"
                 "PRAGMA user_version = 3;");
    std::string before = KVRFiles::read(store.storePath());
    KVRLogCapture log;

    EXPECT_TRUE(KVRTransactionModel::findAll().empty());
    KVRTransactionModel::create()->save();
    EXPECT_TRUE(KVRTransactionModel::findAll().empty());

    EXPECT_TRUE(log.contains("has version 3, newer than version 2")) << log.text();
    store.reopen();
    EXPECT_EQ(KVRFiles::read(store.storePath()), before);
    EXPECT_TRUE(movedAside(store.storeDirectory()).empty());
}

TEST_F(KVRStoreFileTest, AnOlderStoreGetsTheMissingTablesAndColumnsAndKeepsItsRows) {
    makeDatabase(store.storePath(),
                 "CREATE TABLE KVRTransactionModel (id INTEGER PRIMARY KEY, reference TEXT, amount NUMERIC);"
                 "INSERT INTO KVRTransactionModel (reference, amount) VALUES ('OLD', 500);");
    auto old = KVRTransactionModel::findFirst();
    ASSERT_NE(old, nullptr);
    EXPECT_EQ(old->amount(), KVRNumber(500));

    auto merchant = KVRMerchantModel::create();
    merchant->setKovracode("K-1");
    old->setMerchant(merchant);
    old->setShortName("LOJA");
    old->save();
    store.reopen();

    auto reread = KVRTransactionModel::findFirstByAttribute("reference", "OLD");
    ASSERT_NE(reread, nullptr);
    EXPECT_EQ(reread->shortName(), "LOJA");
    ASSERT_NE(reread->merchant(), nullptr);
    EXPECT_EQ(reread->merchant()->kovracode(), "K-1");
    EXPECT_EQ(KVRStoreFileInspector(store.storePath()).number("PRAGMA user_version"), 2);
}

TEST_F(KVRStoreFileTest, FailedReadsAndWritesAreLoggedAndLeaveTheChangesPending) {
    auto tables = KVRTmsTableModel::create();
    tables->save();
    makeDatabase(store.storePath(), "DROP TABLE KVRTmsTableModel");  // pulled from under the open store
    KVRLogCapture log;

    EXPECT_TRUE(KVRTmsTableModel::findAll().empty());
    EXPECT_TRUE(log.contains("Problem! Error Domain=NSSQLiteErrorDomain")) << log.text();
    tables->setAidTable("<AidTbl/>");
    tables->save();
    EXPECT_TRUE(log.contains("An error!! Error Domain=NSSQLiteErrorDomain")) << log.text();
    EXPECT_TRUE(tables->hasChanges());
    KVRPersistenceController::sharedController().saveContext();
    EXPECT_TRUE(log.contains("Unresolved error Error Domain=NSSQLiteErrorDomain")) << log.text();

    // Nothing of the failed save was written, not even the other records.
    auto merchant = KVRMerchantModel::create();
    merchant->save();
    EXPECT_EQ(KVRStoreFileInspector(store.storePath()).count("KVRMerchantModel"), 0);
    EXPECT_TRUE(merchant->isInserted());
}

TEST_F(KVRStoreFileTest, WithoutAStoreDirectoryTheLibraryGoesOnWithoutAStore) {
    writeFile(store.storeDirectory(), "a file where the directory belongs");
    KVRLogCapture log;

    auto merchant = KVRMerchantModel::create();
    ASSERT_NE(merchant, nullptr);
    EXPECT_TRUE(merchant->isDeleted());  // nothing keeps it
    merchant->setKovracode("K-1");
    merchant->save();
    EXPECT_EQ(merchant->kovracode(), "K-1");
    EXPECT_TRUE(KVRMerchantModel::findAll().empty());
    EXPECT_TRUE(log.contains("Path " + store.storeDirectory() + " exists but is no directory")) << log.text();
}

}  // namespace
