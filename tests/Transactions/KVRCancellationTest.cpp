#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Persistence/KVRJournal.h"
#include "Transactions/KVRCancellationController.h"
#include "Transactions/KVRReversalController.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRTemporaryStore.h"

#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string adviceResponse(const std::string& transaction) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<Document xmlns=\"urn:AcceptorCancellationAdviceResponseV02.1\"><AccptrCxlAdvcRspn>"
           "<Hdr><MsgFctn>CCAK</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr>"
           "<CxlAdvcRspn><Envt><Mrchnt><Id><Id>12345678</Id></Id></Mrchnt></Envt>" +
           transaction + "</CxlAdvcRspn></AccptrCxlAdvcRspn></Document>";
}

std::string withCode(const std::string& code) {
    return adviceResponse("<Tx><TxId><TxDtTm>2024-03-05T14:07:00</TxDtTm><TxRef>REF-1</TxRef></TxId><Rspn>" + code +
                          "</Rspn></Tx>");
}

const KVRError kTimedOut(NSURLErrorDomain, NSURLErrorTimedOut);

class CancellationTest : public ::testing::Test {
protected:
    void SetUp() override {
        KVRReachability::setFlagsOverride(KVRReachability::kFlagReachable);
        KVRApplicationInfo::setValue("Kovra Authorizer Host", std::string("auth.test"));
        merchant_ = KVRMerchantModel::create();
        merchant_->setKovracode(std::string("KOVRA-1"));
        merchant_->setSaleAffiliationKey(std::string("1234-5678"));
        merchant_->save();
    }
    void TearDown() override {
        KVRReachability::setFlagsOverride(std::nullopt);
        KVRApplicationInfo::removeValue("Kovra Authorizer Host");
        KVRApplicationInfo::removeValue("Kovra Debugginho Developer");
    }

    std::shared_ptr<KVRTransactionModel> approvedSale() {
        auto sale = KVRTransactionModel::create();
        sale->setAmount(KVRNumber(1250));
        sale->setStatus(2);
        sale->setReceiptTransactionKey(std::string("RCPT-1"));
        sale->setInitiatorTransactionKey(std::string("ITK-1"));
        sale->setReference(std::string("REF-1"));
        sale->setMerchant(merchant_);
        sale->save();
        return sale;
    }

    /// Cancels through the provider and waits for the pool's completion.
    KVRCompletionRecorder::Call cancel(const std::shared_ptr<KVRTransactionModel>& sale) {
        KVRCompletionRecorder recorder;
        KVRCancellationProvider::cancelTransaction(sale, recorder.block());
        EXPECT_TRUE(recorder.waitForCalls(1));
        return recorder.calls().at(0);
    }

    /// The status as a fresh process would read it from disk.
    int storedStatus() {
        store_.reopen();
        auto stored = KVRTransactionModel::findFirstByAttribute("reference", "REF-1");
        return stored ? stored->status() : -1;
    }

    KVRTemporaryStore store_;
    KVRFakeExchange host_;
    std::shared_ptr<KVRMerchantModel> merchant_;
};

TEST_F(CancellationTest, ControllerMapsEveryReplyToOneOutcome) {
    struct Row {
        const char* name;
        std::function<void(KVRFakeExchange&)> host;
        std::optional<KVRError> error;  // none: approved
    } rows[] = {
        {"APPR", [](KVRFakeExchange& h) { h.replyWith(withCode("APPR")); }, std::nullopt},
        {"DECL", [](KVRFakeExchange& h) { h.replyWith(withCode("DECL")); }, KVRErrors::transactionRejected()},
        {"PART", [](KVRFakeExchange& h) { h.replyWith(withCode("PART")); }, KVRErrors::transactionFailed()},
        {"TECH", [](KVRFakeExchange& h) { h.replyWith(withCode("TECH")); }, KVRErrors::transactionFailed()},
        {"unknown code", [](KVRFakeExchange& h) { h.replyWith(withCode("WHAT")); }, KVRErrors::transactionRejected()},
        {"no Tx", [](KVRFakeExchange& h) { h.replyWith(adviceResponse("")); }, KVRErrors::transactionRejected()},
        {"HTML error page",
         [](KVRFakeExchange& h) { h.replyWith("<html><head><title>500</title></head><body>Oops</body></html>"); },
         KVRErrors::transactionRejected()},
        {"plain text", [](KVRFakeExchange& h) { h.replyWith("Service Unavailable"); }, KVRErrors::transactionRejected()},
        {"empty body", [](KVRFakeExchange& h) { h.replyWith(""); }, KVRErrors::nullResponse()},
        {"bytes that are not UTF-8", [](KVRFakeExchange& h) { h.replyWith("\xc3\x28"); }, KVRErrors::nullResponse()},
        {"transport failure", [](KVRFakeExchange& h) { h.failWith(kTimedOut); }, KVRErrors::nullResponse()},
    };
    auto sale = approvedSale();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.host(host_);
        std::vector<std::pair<bool, std::optional<KVRError>>> outcomes;
        KVRCancellationController().sendCancellationWithTransaction(
            sale, [&](bool success, std::optional<KVRError> error) { outcomes.emplace_back(success, error); });
        ASSERT_EQ(outcomes.size(), 1u);
        EXPECT_EQ(outcomes[0].first, !row.error);
        EXPECT_EQ(outcomes[0].second, row.error);
    }
    EXPECT_EQ(sale->status(), 2) << "the controller leaves the record to its caller";

    auto request = host_.requests().back();
    EXPECT_EQ(request.url, "https://auth.test/CancellationAdvice");
    EXPECT_EQ(request.contentType, "text/xml");
    for (const char* part : {"<MsgFctn>CCAV</MsgFctn>", "<RcptTxId>RCPT-1</RcptTxId>", "<InitrTxId>ITK-1</InitrTxId>",
                             "<TtlAmt>1250</TtlAmt>", "<TxRef>REF-1</TxRef>", "<Id>12345678</Id>"}) {
        EXPECT_NE(request.body.find(part), std::string::npos) << part << "\n" << request.body;
    }
}

TEST_F(CancellationTest, TransportFailureIsLoggedByItsDescription) {
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    KVRLogCapture log;
    host_.failWith(KVRError(NSURLErrorDomain, NSURLErrorTimedOut, {{NSLocalizedDescriptionKey, "The request timed out."}}));
    KVRCancellationController().sendCancellationWithTransaction(approvedSale(), [](bool, std::optional<KVRError>) {});
    EXPECT_TRUE(log.contains("Error at confirmCancellation: The request timed out.")) << log.text();
}

TEST_F(CancellationTest, ChecksRunInOrderOnTheCallersThreadWithoutTraffic) {
    auto cancelled = approvedSale();
    cancelled->setStatus(5);
    cancelled->save();
    auto declined = KVRTransactionModel::create();
    declined->setStatus(1);
    auto deleted = KVRTransactionModel::create();
    deleted->setStatus(2);
    deleted->save();
    deleted->deleteRecord();
    auto approved = KVRTransactionModel::create();
    approved->setStatus(2);

    struct Row {
        const char* name;
        std::shared_ptr<KVRTransactionModel> sale;
        uint32_t flags;
        bool enrolled;
        KVRError error;
    } rows[] = {
        {"status first, even offline and unenrolled", cancelled, 0, false, KVRErrors::transactionAlreadyCancelled()},
        {"a declined sale", declined, KVRReachability::kFlagReachable, true, KVRErrors::transactionAlreadyCancelled()},
        {"a record deleted from the store", deleted, KVRReachability::kFlagReachable, true,
         KVRErrors::transactionAlreadyCancelled()},
        {"no record at all", nullptr, KVRReachability::kFlagReachable, true, KVRErrors::transactionAlreadyCancelled()},
        {"network before enrolment", approved, 0, false, KVRErrors::notConnectedToNetwork()},
        {"enrolment", approved, KVRReachability::kFlagReachable, false, KVRErrors::missingKovracodeActivation()},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        KVRReachability::setFlagsOverride(row.flags);
        if (!row.enrolled && merchant_) {
            merchant_->deleteRecord();
            merchant_ = nullptr;
        }
        KVRCompletionRecorder recorder;
        KVRCancellationProvider::cancelTransaction(row.sale, recorder.block());
        ASSERT_EQ(recorder.count(), 1u) << "reported before returning";
        auto call = recorder.calls()[0];
        EXPECT_FALSE(call.success);
        EXPECT_EQ(call.error, row.error);
        EXPECT_EQ(call.thread, std::this_thread::get_id());
    }
    EXPECT_EQ(host_.count(), 0u);
    EXPECT_EQ(approved->status(), 2);
}

TEST_F(CancellationTest, AnApprovedAdviceMarksTheSaleCancelledOnThePool) {
    auto sale = approvedSale();
    host_.replyWith(withCode("APPR"));
    auto call = cancel(sale);
    EXPECT_TRUE(call.success);
    EXPECT_FALSE(call.error);
    EXPECT_NE(call.thread, std::this_thread::get_id());
    EXPECT_EQ(storedStatus(), 5);

    auto again = KVRTransactionModel::findFirstByAttribute("reference", "REF-1");
    KVRCompletionRecorder recorder;
    KVRCancellationProvider::cancelTransaction(again, recorder.block());
    ASSERT_EQ(recorder.count(), 1u);
    EXPECT_EQ(recorder.calls()[0].error, KVRErrors::transactionAlreadyCancelled());
    EXPECT_EQ(host_.count(), 1u) << "the second attempt sends nothing";
}

TEST_F(CancellationTest, EveryFailureLeavesTheSaleApprovedSoItCanBeTriedAgain) {
    struct Row {
        const char* name;
        std::function<void(KVRFakeExchange&)> host;
        KVRError error;
    } rows[] = {
        {"declined", [](KVRFakeExchange& h) { h.replyWith(withCode("DECL")); }, KVRErrors::transactionRejected()},
        {"technical", [](KVRFakeExchange& h) { h.replyWith(withCode("TECH")); }, KVRErrors::transactionFailed()},
        {"HTML", [](KVRFakeExchange& h) { h.replyWith("<html>502</html>"); }, KVRErrors::transactionRejected()},
        {"empty", [](KVRFakeExchange& h) { h.replyWith(""); }, KVRErrors::nullResponse()},
        {"no connection", [](KVRFakeExchange& h) { h.failWith(kTimedOut); }, KVRErrors::nullResponse()},
    };
    approvedSale();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.host(host_);
        auto call = cancel(KVRTransactionModel::findFirstByAttribute("reference", "REF-1"));
        EXPECT_FALSE(call.success);
        EXPECT_EQ(call.error, row.error);
        EXPECT_EQ(storedStatus(), 2);
    }
    host_.replyWith(withCode("APPR"));
    EXPECT_TRUE(cancel(KVRTransactionModel::findFirstByAttribute("reference", "REF-1")).success);
    EXPECT_EQ(storedStatus(), 5);
}

TEST_F(CancellationTest, ARecordDeletedDuringTheExchangeStaysDeleted) {
    auto sale = approvedSale();
    host_.setReply([sale](const KVRFakeExchange::Request&, std::optional<KVRError>*) {
        sale->deleteRecord();
        return std::optional<std::string>(withCode("APPR"));
    });
    auto call = cancel(sale);
    EXPECT_TRUE(call.success) << "the acquirer did cancel it";
    EXPECT_EQ(storedStatus(), -1);
}

// Nobody finished the sales of a process that died: what the host approved,
// or may have approved, is reversed; a decline is settled without an advice,
// and a running process's entries are left to it.
TEST_F(CancellationTest, RecoveryReversesWhatADeadProcessMayHaveLeftApproved) {
    constexpr long long kDeadProcess = 2147480000;  // above any pid_max
    constexpr long long kRunningProcess = 1;
    struct Row {
        const char* name;
        const char* state;
        std::optional<int> hostResponse;
        long long process;
        const char* after;
    } rows[] = {
        {"no answer came", KVRJournalEntry::kSent, std::nullopt, kDeadProcess, KVRJournalEntry::kReversed},
        {"approved, never stored", KVRJournalEntry::kAnswered, 1, kDeadProcess, KVRJournalEntry::kReversed},
        {"declined", KVRJournalEntry::kAnswered, 0, kDeadProcess, KVRJournalEntry::kSettled},
        {"its process still runs", KVRJournalEntry::kSent, std::nullopt, kRunningProcess, KVRJournalEntry::kSent},
    };
    host_.replyWith(withCode("APPR"));
    std::vector<std::int64_t> identifiers;
    for (const auto& row : rows) {
        KVRJournalEntry entry;
        entry.state = row.state;
        entry.hostResponse = row.hostResponse;
        entry.processIdentifier = row.process;
        entry.initiatorTransactionKey = row.name;
        entry.reference = "REF-1";
        entry.amount = "1250";
        entry.merchantKey = "1234-5678";
        ASSERT_TRUE(KVRJournal::append(entry));
        identifiers.push_back(entry.identifier);
    }
    KVRReversalController::recoverNow();
    for (size_t i = 0; i < identifiers.size(); ++i) {
        SCOPED_TRACE(rows[i].name);
        EXPECT_EQ(KVRJournal::entry(identifiers[i])->state, rows[i].after);
    }
    EXPECT_EQ(host_.count(), 2u);
}

}  // namespace
