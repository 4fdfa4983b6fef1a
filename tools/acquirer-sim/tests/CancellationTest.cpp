// "/CancellationAdvice": which advices are approved (the ledger's restart is
// in LifecycleTest).
#include "Messages.h"
#include "SimSession.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

const std::string kRspn = "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Tx/Rspn";

class CancellationTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { session_ = std::make_unique<SimSession>(); }
    static void TearDownTestSuite() { session_.reset(); }

    static std::string cancel(const CancellationFields& fields) {
        return valueAt(session_->client().postXml("/CancellationAdvice", cancellationAdvice(fields)).body, kRspn);
    }

    static std::unique_ptr<SimSession> session_;
};

std::unique_ptr<SimSession> CancellationTest::session_;

// A repeat (an answer the terminal lost) is approved again; an advice
// without RcptTxId finds the sale by its InitrTxId; leading zeros of the
// amount do not matter; a partly approved sale can be cancelled, a declined one not.
TEST_F(CancellationTest, ApprovesTheAdvicesThatMatchASale) {
    for (bool withReceipt : {true, false}) {
        CancellationFields advice = authorised(session_->client());
        if (!withReceipt) advice.receiptId.clear();
        HttpReply first = session_->client().postXml("/CancellationAdvice", cancellationAdvice(advice));
        EXPECT_EQ(valueAt(first.body, kRspn), "APPR");
        EXPECT_EQ(valueAt(first.body, "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Tx/TxId/TxRef"), advice.reference);
        EXPECT_TRUE(hasNode(first.body, "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Tx/TxId/TxDtTm"));
        EXPECT_EQ(valueAt(first.body, "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Envt/Mrchnt/Id/Id"), "12345678");
        EXPECT_EQ(cancel(advice), "APPR");
    }
    CancellationFields padded = authorised(session_->client(), "2500");
    padded.amount = "002500";
    EXPECT_EQ(cancel(padded), "APPR");
    EXPECT_EQ(cancel(authorised(session_->client(), "1052")), "APPR");
    EXPECT_EQ(cancel(authorised(session_->client(), "1051")), "DECL");
}

// Each advice is declined, and the sale stays cancellable afterwards.
TEST_F(CancellationTest, MismatchIsDeclinedAndLeavesTheSaleCancellable) {
    const std::vector<std::pair<const char*, void (*)(CancellationFields&)>> mismatches{
        {"UnknownReceipt", [](CancellationFields& f) { f.receiptId = "2501010999999999"; }},
        {"NoReceiptOtherInitiator", [](CancellationFields& f) { f.receiptId.clear(); f.initiatorId = "OTHER-1"; }},
        {"OtherInitiator", [](CancellationFields& f) { f.initiatorId = "OTHER-1"; }},
        {"OtherAmount", [](CancellationFields& f) { f.amount = "999"; }},
        {"OtherReference", [](CancellationFields& f) { f.reference = "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"; }},
        {"OtherMerchant", [](CancellationFields& f) { f.merchantId = "87654321"; }}};
    for (const auto& [name, change] : mismatches) {
        SCOPED_TRACE(name);
        CancellationFields advice = authorised(session_->client());
        CancellationFields wrong = advice;
        change(wrong);
        EXPECT_EQ(cancel(wrong), "DECL");
        EXPECT_EQ(cancel(advice), "APPR");
    }
}

TEST_F(CancellationTest, BrokenAdviceIsRejected) {
    CancellationFields fields;
    fields.receiptId = "2501010000000001";
    const std::string good = cancellationAdvice(fields);
    const std::string header = "<Hdr><MsgFctn>CCAV</MsgFctn><PrtcolVrsn>2.0</PrtcolVrsn></Hdr>";
    const std::vector<std::pair<const char*, std::string>> broken{
        {"DateBeforeReference", replace(replace(good, "<TxDtTm>2025-06-01T11:00:00</TxDtTm>", ""), "<TxRef>",
                                        "<TxDtTm>2025-06-01T11:00:00</TxDtTm><TxRef>")},
        {"HeaderFirst", replace(replace(good, header, ""), "<CxlAdvc>", header + "<CxlAdvc>")},
        {"MessageFunction", replace(good, "<MsgFctn>CCAV</MsgFctn>", "<MsgFctn>CCAQ</MsgFctn>")},
        {"WrongNamespace", replace(good, "urn:AcceptorCancellationAdviceV02.1", "urn:AcceptorAuthorisationRequestV02.1")},
        {"Currency", replace(good, "<Ccy>986</Ccy>", "<Ccy>978</Ccy>")},
        {"NoInitiatorKey", replace(good, "<InitrTxId>PP12345678-25300001A1B2100</InitrTxId>", "")},
        {"NoDetails", replace(good, "<TxDtls><Ccy>986</Ccy><TtlAmt>1000</TtlAmt></TxDtls>", "")},
    };
    for (const auto& [name, body] : broken) {
        SCOPED_TRACE(name);
        HttpReply reply = session_->client().postXml("/CancellationAdvice", body);
        EXPECT_EQ(reply.status, 400);
        EXPECT_TRUE(hasNode(reply.body, "/Document/AccptrRjctn")) << reply.body;
        EXPECT_FALSE(hasNode(reply.body, "/Document/AccptrCxlAdvcRspn"));
    }
}

} // namespace
