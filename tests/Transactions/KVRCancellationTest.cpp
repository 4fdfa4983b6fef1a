#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Persistence/KVRJournal.h"
#include "Transactions/KVRReversalController.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

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

class CancellationTest : public KVRTestFixture {
protected:
    void SetUp() override {
        KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
        KVRApplicationInfo::setValue("Kovra Authorizer Host", std::string("auth.test"));
        merchant_ = KVRMerchantModel::create();
        merchant_->setKovracode(std::string("KOVRA-1"));
        merchant_->setSaleAffiliationKey(std::string("1234-5678"));
        merchant_->save();
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

// Every answer maps to one outcome. Only an approval marks the sale
// cancelled; any failure leaves it approved, so that it can be tried again.
TEST_F(CancellationTest, EveryAnswerMapsToOneOutcomeAndOnlyAnApprovalCancelsTheSale) {
    struct Row {
        const char* name;
        std::function<void(KVRFakeExchange&)> host;
        std::optional<KVRError> error;  // none: approved
    } rows[] = {
        {"DECL", [](KVRFakeExchange& h) { h.replyWith(withCode("DECL")); }, KVRErrors::transactionRejected()},
        {"PART", [](KVRFakeExchange& h) { h.replyWith(withCode("PART")); }, KVRErrors::transactionFailed()},
        {"TECH", [](KVRFakeExchange& h) { h.replyWith(withCode("TECH")); }, KVRErrors::transactionFailed()},
        {"unknown code", [](KVRFakeExchange& h) { h.replyWith(withCode("WHAT")); }, KVRErrors::transactionRejected()},
        {"no Tx", [](KVRFakeExchange& h) { h.replyWith(adviceResponse("")); }, KVRErrors::transactionRejected()},
        {"plain text", [](KVRFakeExchange& h) { h.replyWith("Service Unavailable"); }, KVRErrors::transactionRejected()},
        {"empty body", [](KVRFakeExchange& h) { h.replyWith(""); }, KVRErrors::nullResponse()},
        {"bytes that are not UTF-8", [](KVRFakeExchange& h) { h.replyWith("\xc3\x28"); }, KVRErrors::nullResponse()},
        {"transport failure", [](KVRFakeExchange& h) { h.failWith(kTimedOut); }, KVRErrors::nullResponse()},
        {"APPR", [](KVRFakeExchange& h) { h.replyWith(withCode("APPR")); }, std::nullopt},
    };
    approvedSale();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.host(host_);
        auto call = cancel(KVRTransactionModel::findFirstByAttribute("reference", "REF-1"));
        EXPECT_EQ(call.success, !row.error);
        EXPECT_EQ(call.error, row.error);
        EXPECT_EQ(storedStatus(), row.error ? 2 : 5);
    }
    auto request = host_.requests().back();
    EXPECT_EQ(request.url, "https://auth.test/CancellationAdvice");
    for (const char* part : {"<MsgFctn>CCAV</MsgFctn>", "<RcptTxId>RCPT-1</RcptTxId>", "<InitrTxId>ITK-1</InitrTxId>",
                             "<TtlAmt>1250</TtlAmt>", "<TxRef>REF-1</TxRef>"}) {
        EXPECT_NE(request.body.find(part), std::string::npos) << part << "\n" << request.body;
    }

    size_t sent = host_.count();
    KVRCompletionRecorder again;
    KVRCancellationProvider::cancelTransaction(KVRTransactionModel::findFirstByAttribute("reference", "REF-1"),
                                               again.block());
    ASSERT_EQ(again.count(), 1u);
    EXPECT_EQ(again.calls()[0].error, KVRErrors::transactionAlreadyCancelled());
    EXPECT_EQ(host_.count(), sent) << "the second attempt sends nothing";
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
