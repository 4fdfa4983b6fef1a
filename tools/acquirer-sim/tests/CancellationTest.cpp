// "/CancellationAdvice": which advices are approved, and that the
// authorisations behind them survive a restart.
#include "Messages.h"
#include "SimSession.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include <nlohmann/json.hpp>

namespace {

constexpr const char* kRspn = "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Tx/Rspn";
constexpr const char* kRcpt = "/Document/AccptrAuthstnRspn/AuthstnRspn/Tx/RcptTxId";

// An authorisation of `amount` and the advice that would cancel it.
CancellationFields authorised(HttpsClient& client, const std::string& amount, const std::string& reference) {
    AuthorisationFields sale;
    sale.amount = amount;
    sale.reference = reference;
    HttpReply reply = client.postXml("/Authorize", authorisationRequest(sale));
    CancellationFields advice;
    advice.receiptId = valueAt(reply.body, kRcpt);
    EXPECT_FALSE(advice.receiptId.empty()) << reply.body;
    advice.amount = amount;
    advice.reference = reference;
    advice.initiatorId = sale.initiatorId;
    return advice;
}

class CancellationTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { session_ = std::make_unique<SimSession>(); }
    static void TearDownTestSuite() { session_.reset(); }

    static HttpReply cancel(const CancellationFields& fields) {
        return session_->client().postXml("/CancellationAdvice", cancellationAdvice(fields));
    }
    static CancellationFields approvedSale(const std::string& amount = "1000") {
        return authorised(session_->client(), amount, "C0FFEE00C0FFEE00C0FFEE00C0FFEE00");
    }

    static std::unique_ptr<SimSession> session_;
};

std::unique_ptr<SimSession> CancellationTest::session_;

// A repeat (an answer the terminal lost) is approved again; an advice
// without RcptTxId finds the sale by its InitrTxId.
TEST_F(CancellationTest, ApprovesTheRepeatAndTheAdviceWithoutReceipt) {
    for (bool withReceipt : {true, false}) {
        CancellationFields advice = approvedSale();
        if (!withReceipt) advice.receiptId.clear();

        HttpReply first = cancel(advice);
        EXPECT_EQ(valueAt(first.body, kRspn), "APPR");
        EXPECT_EQ(valueAt(first.body, "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Tx/TxId/TxRef"), advice.reference);
        EXPECT_TRUE(hasNode(first.body, "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Tx/TxId/TxDtTm"));
        EXPECT_EQ(valueAt(first.body, "/Document/AccptrCxlAdvcRspn/CxlAdvcRspn/Envt/Mrchnt/Id/Id"), "12345678");
        EXPECT_EQ(valueAt(cancel(advice).body, kRspn), "APPR");
    }
}

struct Mismatch {
    const char* name;
    void (*change)(CancellationFields&);
};

void PrintTo(const Mismatch& value, std::ostream* out) {
    *out << value.name;
}

class CancellationMismatchTest : public CancellationTest, public ::testing::WithParamInterface<Mismatch> {};

// Each advice is declined, and the sale stays cancellable afterwards.
TEST_P(CancellationMismatchTest, IsDeclinedAndLeavesTheSaleCancellable) {
    CancellationFields advice = approvedSale();
    CancellationFields wrong = advice;
    GetParam().change(wrong);

    HttpReply reply = cancel(wrong);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(valueAt(reply.body, kRspn), "DECL");
    EXPECT_EQ(valueAt(cancel(advice).body, kRspn), "APPR");
}

INSTANTIATE_TEST_SUITE_P(
    Advices, CancellationMismatchTest,
    ::testing::Values(Mismatch{"UnknownReceipt", [](CancellationFields& f) { f.receiptId = "2501010999999999"; }},
                      Mismatch{"NoReceiptOtherInitiator",
                               [](CancellationFields& f) {
                                   f.receiptId.clear();
                                   f.initiatorId = "OTHER-1";
                               }},
                      Mismatch{"OtherInitiator", [](CancellationFields& f) { f.initiatorId = "OTHER-1"; }},
                      Mismatch{"OtherAmount", [](CancellationFields& f) { f.amount = "999"; }},
                      Mismatch{"OtherReference", [](CancellationFields& f) { f.reference = "FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF"; }},
                      Mismatch{"OtherMerchant", [](CancellationFields& f) { f.merchantId = "87654321"; }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(CancellationTest, PartlyApprovedSaleCanBeCancelledADeclinedOneCannot) {
    EXPECT_EQ(valueAt(cancel(approvedSale("1052")).body, kRspn), "APPR");
    EXPECT_EQ(valueAt(cancel(approvedSale("1051")).body, kRspn), "DECL");
}

TEST_F(CancellationTest, AmountWithLeadingZerosStillMatches) {
    CancellationFields advice = approvedSale("2500");
    advice.amount = "002500";
    EXPECT_EQ(valueAt(cancel(advice).body, kRspn), "APPR");
}

struct BrokenAdvice {
    const char* name;
    std::string body;
};

void PrintTo(const BrokenAdvice& value, std::ostream* out) {
    *out << value.name;
}

class BrokenAdviceTest : public CancellationTest, public ::testing::WithParamInterface<BrokenAdvice> {};

TEST_P(BrokenAdviceTest, IsRejected) {
    HttpReply reply = session_->client().postXml("/CancellationAdvice", GetParam().body);

    EXPECT_EQ(reply.status, 400);
    EXPECT_TRUE(hasNode(reply.body, "/Document/AccptrRjctn")) << reply.body;
    EXPECT_FALSE(hasNode(reply.body, "/Document/AccptrCxlAdvcRspn"));
}

std::vector<BrokenAdvice> brokenAdvices() {
    CancellationFields fields;
    fields.receiptId = "2501010000000001";
    const std::string good = cancellationAdvice(fields);
    return {
        {"DateBeforeReference",
         replace(replace(good, "<TxDtTm>2025-06-01T11:00:00</TxDtTm>", ""), "<TxRef>",
                 "<TxDtTm>2025-06-01T11:00:00</TxDtTm><TxRef>")},
        {"HeaderFirst", replace(replace(good, "<CxlAdvc>", "<Hdr><MsgFctn>CCAV</MsgFctn></Hdr><CxlAdvc>"),
                                "\t\t<Hdr>\n\t\t\t<MsgFctn>CCAV</MsgFctn>\n\t\t\t<PrtcolVrsn>2.0</PrtcolVrsn>\n\t\t</Hdr>\n", "")},
        {"MessageFunction", replace(good, "<MsgFctn>CCAV</MsgFctn>", "<MsgFctn>CCAQ</MsgFctn>")},
        {"WrongNamespace", replace(good, "urn:AcceptorCancellationAdviceV02.1", "urn:AcceptorAuthorisationRequestV02.1")},
        {"Currency", replace(good, "<Ccy>986</Ccy>", "<Ccy>978</Ccy>")},
        {"NoInitiatorKey", replace(good, "<InitrTxId>PP12345678-25300001A1B2100</InitrTxId>", "")},
        {"NoDetails", without(good, "<TxDtls>", "</TxDtls>")},
    };
}

INSTANTIATE_TEST_SUITE_P(Advices, BrokenAdviceTest, ::testing::ValuesIn(brokenAdvices()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(CancellationPersistenceTest, SaleAuthorisedBeforeARestartCanBeCancelledAfterIt) {
    TempDir directory;
    CancellationFields advice;
    {
        SimProcess first(directory.path());
        HttpsClient client(first.baseUrl(), first.caFile());
        advice = authorised(client, "4200", "ABCDEF0123456789ABCDEF0123456789");
        EXPECT_EQ(first.stop(), 0);
    }
    SimProcess second(directory.path());
    HttpsClient client(second.baseUrl(), second.caFile());
    EXPECT_EQ(valueAt(client.postXml("/CancellationAdvice", cancellationAdvice(advice)).body, kRspn), "APPR");
    EXPECT_EQ(second.stop(), 0);

    std::ifstream state(directory.path() / "state.json");
    auto ledger = nlohmann::json::parse(state);
    EXPECT_EQ(ledger["authorisations"][advice.receiptId]["cancelled"], true) << ledger.dump(2);
}

} // namespace
