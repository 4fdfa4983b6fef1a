#include <gtest/gtest.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRNotificationCenter.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRTmsTableModel.h>

#include "Host/KVRCommunicationController.h"
#include "Pinpad/KVRPinpadController.h"
#include "Tms/KVRTmsController.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVREmvTableSamples.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRScriptedConnection.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <mutex>
#include <thread>

namespace samples = KVREmvTableSamples;

namespace {

void storeTables(const std::string& aid, const std::string& capk) {
    auto tables = KVRTmsTableModel::findFirst();
    if (!tables) tables = KVRTmsTableModel::create();
    tables->setAidTable(aid);
    tables->setCapkTable(capk);
    tables->save();
}

// ---- Download ----

class TableDownloadTest : public KVRTestFixture {
protected:
    std::optional<std::string> storedAid() const {
        auto tables = KVRTmsTableModel::findFirst();
        return tables ? tables->aidTable() : std::nullopt;
    }

    KVRTemporaryStore store_;
    KVRLogCapture log_;
    KVRFakeExchange host_;
    KVRCompletionRecorder recorder_;
};

// Only a reply with both tables whole replaces the one table record.
TEST_F(TableDownloadTest, OnlyACompleteReplyReplacesTheTablesItFound) {
    std::string aid = samples::defaultAidTable();
    std::string capk = samples::defaultCapkTable();
    std::string complete = samples::configurationUpdate(aid, capk);
    struct Row {
        const char* what;
        std::optional<std::string> reply;  // none: the host cannot be reached
        long code;                         // 0: success
    } rows[] = {
        {"no CapkTable", samples::configurationUpdate(aid, ""), 306},
        {"no AidTbl", samples::configurationUpdate("", capk), 306},
        {"reply cut inside the CAPK table", complete.substr(0, complete.find("</CapkTable>")), 306},
        {"empty reply", std::string(), 306},
        {"host unreachable", std::nullopt, NSURLErrorCannotConnectToHost},
        {"complete reply", complete, 0},
    };
    storeTables("<AidTbl>kept</AidTbl>", "<CapkTable>kept</CapkTable>");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        if (row.reply) host_.replyWith(*row.reply);
        else host_.failWith(KVRError(NSURLErrorDomain, NSURLErrorCannotConnectToHost));
        KVRCompletionRecorder recorder;
        KVRTmsController().downloadTablesWithSaleAffiliationKey(std::string("SAK-0042"), recorder.block());
        ASSERT_EQ(recorder.count(), 1u) << "the controller completes once, before it returns";
        EXPECT_EQ(recorder.calls()[0].success, row.code == 0);
        EXPECT_EQ(recorder.calls()[0].error ? recorder.calls()[0].error->code() : 0, row.code);
        EXPECT_EQ(storedAid(), row.code ? std::optional<std::string>("<AidTbl>kept</AidTbl>") : aid);
        ASSERT_EQ(KVRTmsTableModel::findAll().size(), 1u);
    }
    EXPECT_EQ(KVRTmsTableModel::findFirst()->capkTable(), capk);
    auto post = host_.requests().back();
    EXPECT_EQ(post.url, "https://tms.kovra.com.br/Report");
    EXPECT_NE(post.body.find("<Id>SAK-0042</Id>"), std::string::npos) << post.body;
}

TEST_F(TableDownloadTest, NoSaleAffiliationKeyPostsNothing) {
    for (const auto& key : {std::optional<std::string>(), std::optional<std::string>("")}) {
        KVRCompletionRecorder recorder;
        KVRTmsController().downloadTablesWithSaleAffiliationKey(key, recorder.block());
        ASSERT_EQ(recorder.count(), 1u);
        ASSERT_TRUE(recorder.calls()[0].error);
        EXPECT_EQ(recorder.calls()[0].error->code(), 201);
    }
    EXPECT_TRUE(host_.requests().empty());
}

TEST_F(TableDownloadTest, ProviderDownloadsForTheFirstMerchantOnAHostPool) {
    KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
    for (const char* key : {"SAK-FIRST", "SAK-SECOND"}) {
        auto merchant = KVRMerchantModel::create();
        merchant->setSaleAffiliationKey(std::string(key));
        merchant->save();
    }
    host_.replyWith(samples::configurationUpdate(samples::defaultAidTable(), samples::defaultCapkTable()));
    KVRTableDownloaderProvider::downLoadTables(recorder_.block());
    ASSERT_TRUE(recorder_.waitForCalls(1));
    auto call = recorder_.calls()[0];
    EXPECT_TRUE(call.success);
    EXPECT_NE(call.thread, std::this_thread::get_id());
    auto posts = host_.requests();
    ASSERT_EQ(posts.size(), 1u);
    EXPECT_NE(posts[0].body.find("SAK-FIRST"), std::string::npos);
    EXPECT_EQ(storedAid(), samples::defaultAidTable());
}

// ---- Load ----

class TableLoadTest : public KVRTestFixture {
protected:
    void SetUp() override {
        token_ = KVRNotificationCenter::defaultCenter().addObserver(
            KVRTmsController::kTableLoadProgressNotification, [this](const KVRNotification& n) {
                std::lock_guard lock(mutex_);
                progress_.push_back(std::any_cast<std::string>(n.object));
                progressOnMainWorker_ = progressOnMainWorker_ && KVRQueues::isMainWorker();
            });
    }
    void TearDown() override {
        KVRNotificationCenter::defaultCenter().removeObserver(token_);
    }

    KVRCompletionRecorder::Call load() {
        KVRCompletionRecorder recorder;
        KVRTmsController().loadTmsTablesToPinpadWithBlock(recorder.block());
        EXPECT_EQ(recorder.count(), 1u);
        return recorder.calls().front();
    }
    std::vector<std::string> progress() const {
        std::lock_guard lock(mutex_);
        return progress_;
    }

    KVRTemporaryStore store_;
    KVRLogCapture log_;
    std::shared_ptr<KVRScriptedConnection> pinpad_ = KVRScriptedConnection::install();
    KVRNotificationCenter::Token token_ = 0;
    mutable std::mutex mutex_;
    std::vector<std::string> progress_;
    bool progressOnMainWorker_ = true;
};

TEST_F(TableLoadTest, SendsTliEveryAidEveryCapkTleThenTheMessage) {
    storeTables(samples::defaultAidTable(), samples::defaultCapkTable());
    auto call = load();
    EXPECT_TRUE(call.success);
    EXPECT_FALSE(call.error);

    auto requests = pinpad_->requests();
    ASSERT_EQ(requests.size(), 7u);
    EXPECT_EQ(requests[0], "TLI01200" "2014053065");
    // TLR, block length, one record, its own length (the record's 281 or 608 plus 3), table type, acquirer, index.
    EXPECT_EQ(requests[1].substr(0, 16), "TLR286" "01" "284" "1" "08" "01");
    EXPECT_EQ(requests[1].substr(16, 16), "07A0000000031010");
    EXPECT_EQ(requests[2].substr(0, 16), "TLR286" "01" "284" "1" "08" "02");
    EXPECT_EQ(requests[2].substr(16, 16), "07A0000000032010");
    EXPECT_EQ(requests[3].substr(0, 16), "TLR613" "01" "611" "2" "08" "01");
    EXPECT_EQ(requests[3].substr(16, 10), "A000000003");
    EXPECT_EQ(requests[4].substr(0, 16), "TLR613" "01" "611" "2" "08" "02");
    EXPECT_EQ(requests[4].substr(16, 10), "A000000004");
    EXPECT_EQ(requests[5], "TLE000");
    EXPECT_EQ(requests[6], "DSP032TABELA          ATUALIZADA      ");
    EXPECT_EQ(progress(), (std::vector<std::string>{"1/4", "2/4", "3/4", "4/4"}));

    storeTables(samples::aidTable({}), samples::defaultCapkTable());
    pinpad_ = KVRScriptedConnection::install();
    EXPECT_TRUE(load().success);
    EXPECT_EQ(pinpad_->commands(), (std::vector<std::string>{"TLI", "TLR", "TLR", "TLE", "DSP"})) << "no AID";
}

TEST_F(TableLoadTest, NoStoredTablesSendsNothing) {
    auto call = load();
    EXPECT_FALSE(call.success);
    ASSERT_TRUE(call.error);
    EXPECT_EQ(call.error->code(), 304);
    EXPECT_TRUE(pinpad_->requests().empty());
}

TEST_F(TableLoadTest, TablesThatCannotBeLoadedStopAfterTli) {
    samples::Aid longName;
    longName.appName = "NAME OF 17 CHARS!";
    samples::Capk shortModulus;
    shortModulus.modulusLength = "17";  // one byte more than the text holds
    samples::Capk bigModulus;
    bigModulus.modulus = std::string(498, 'F');
    bigModulus.modulusLength = "0";
    std::string goodAid = samples::defaultAidTable();
    std::string goodCapk = samples::defaultCapkTable();
    struct Row {
        const char* what;
        std::string aid;
        std::string capk;
        std::optional<long> code;  // nothing: the XML reader's error
    } rows[] = {
        {"AID table is not XML", "AidTbl", goodCapk, std::nullopt},
        {"CAPK table is not XML", goodAid, "< CapkTable >", std::nullopt},
        {"application name over 16", samples::aidTable({samples::Aid(), longName}), goodCapk, 305},
        {"modulus length beyond the text", goodAid, samples::capkTable({samples::Capk(), shortModulus}), 305},
        {"modulus over 496 digits", goodAid, samples::capkTable({bigModulus}), 305},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        size_t before = pinpad_->requests().size();
        storeTables(row.aid, row.capk);
        auto call = load();
        EXPECT_FALSE(call.success);
        ASSERT_TRUE(call.error);
        if (row.code) EXPECT_EQ(call.error->code(), *row.code);
        else EXPECT_NE(call.error->domain(), KVRErrors::domain()) << "the reader's own error";
        auto requests = pinpad_->requests();
        ASSERT_EQ(requests.size(), before + 1);
        EXPECT_EQ(requests.back().substr(0, 3), "TLI");
    }
    EXPECT_TRUE(progress().empty());
}

TEST_F(TableLoadTest, NoLinkIsReportedNotThrown) {
    storeTables(samples::defaultAidTable(), samples::defaultCapkTable());
    KVRPinpadController::sharedController().setConnection(nullptr);
    auto call = load();
    EXPECT_FALSE(call.success);
    ASSERT_TRUE(call.error);
    EXPECT_EQ(call.error->code(), 305);
}

TEST_F(TableLoadTest, ProviderLoadsOnTheMainWorkerAndReportsThere) {
    storeTables(samples::defaultAidTable(), samples::defaultCapkTable());
    KVRCompletionRecorder recorder;
    std::thread::id mainWorker;
    KVRQueues::main().sync([&] { mainWorker = std::this_thread::get_id(); });
    KVRTableLoaderProvider::loadTables(recorder.block());
    ASSERT_TRUE(recorder.waitForCalls(1));
    EXPECT_TRUE(recorder.calls()[0].success);
    EXPECT_EQ(recorder.calls()[0].thread, mainWorker);
    EXPECT_EQ(pinpad_->commands(), (std::vector<std::string>{"TLI", "TLR", "TLR", "TLR", "TLR", "TLE", "DSP"}));
    EXPECT_EQ(progress().size(), 4u);
    EXPECT_TRUE(progressOnMainWorker_);
}

}  // namespace
