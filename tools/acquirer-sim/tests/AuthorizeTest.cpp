// "/Authorize": the decisions by amount, the shape of the answer, and the
// structure rules that keep a faulty request from passing unnoticed.
#include "Messages.h"
#include "SimSession.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <regex>
#include <set>

namespace {

const std::string kResult = "/Document/AccptrAuthstnRspn/AuthstnRspn/TxRspn/AuthstnRslt";
const std::string kTx = "/Document/AccptrAuthstnRspn/AuthstnRspn/Tx";

class AuthorizeTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { session_ = std::make_unique<SimSession>(); }
    static void TearDownTestSuite() { session_.reset(); }

    static HttpReply authorise(const AuthorisationFields& fields) {
        return session_->client().postXml("/Authorize", authorisationRequest(fields));
    }
    static HttpReply authorise(const std::string& amount) {
        AuthorisationFields fields;
        fields.amount = amount;
        return authorise(fields);
    }

    static std::unique_ptr<SimSession> session_;
};

std::unique_ptr<SimSession> AuthorizeTest::session_;

// The last two digits decide, and tag 8A tells the card so after the card's
// own cryptogram (for the receipt); tag 91 carries ten bytes. The answer
// echoes the sale and issues a receipt key of its own to each.
TEST_F(AuthorizeTest, DecidesByTheLastTwoDigitsAndEchoesTheSale) {
    const std::vector<std::tuple<const char*, const char*, const char*>> cases{
        {"1000", "APPR", "3030"}, {"1051", "DECL", "3035"}, {"1052", "PART", "3130"}, {"253", "TECH", "3936"},
        {"150", "APPR", "3030"},  {"7", "APPR", "3030"},    {"5100", "APPR", "3030"}};
    std::set<std::string> receipts;
    for (const auto& [amount, response, arc] : cases) {
        SCOPED_TRACE(amount);
        AuthorisationFields fields;
        fields.amount = amount;
        fields.reference = std::string(32 - fields.amount.size(), 'A') + amount;
        HttpReply reply = authorise(fields);
        ASSERT_EQ(reply.error, CURLE_OK);
        EXPECT_EQ(reply.status, 200);
        EXPECT_EQ(valueAt(reply.body, kResult + "/RspnToAuthstn/Rspn"), response);
        EXPECT_TRUE(std::regex_match(valueAt(reply.body, kResult + "/AuthstnCd"), std::regex(R"(\d{6})")));
        EXPECT_EQ(valueAt(reply.body, kTx + "/TxDtls/TtlAmt"), amount);
        const std::string issuerData = valueAt(reply.body, kTx + "/TxDtls/ICCRltdData");
        EXPECT_EQ(issuerData.rfind(std::string("9F2608A1B2C3D4E5F607188A02") + arc + "910A", 0), 0u) << issuerData;
        EXPECT_EQ(valueAt(reply.body, kTx + "/TxId/TxRef"), fields.reference);
        EXPECT_TRUE(hasNode(reply.body, kTx + "/TxId/TxDtTm"));
        EXPECT_EQ(valueAt(reply.body, "/Document/AccptrAuthstnRspn/Hdr/MsgFctn"), "AUTP");
        EXPECT_EQ(valueAt(reply.body, "/Document/AccptrAuthstnRspn/AuthstnRspn/Envt/MrchntId/Id"), "12345678");
        const std::string receipt = valueAt(reply.body, kTx + "/RcptTxId");
        EXPECT_GE(receipt.size(), 12u);
        EXPECT_LE(receipt.size(), 20u);
        receipts.insert(receipt);
    }
    EXPECT_EQ(receipts.size(), cases.size());

    AuthorisationFields stripe;
    stripe.entryMode = "MGST";
    stripe.cardData.clear();
    stripe.onlinePin = false;
    HttpReply stripeReply = authorise(stripe);
    EXPECT_EQ(valueAt(stripeReply.body, kResult + "/RspnToAuthstn/Rspn"), "APPR");
    EXPECT_FALSE(hasNode(stripeReply.body, kTx + "/TxDtls/ICCRltdData"));
}

// Amounts ending in 55 to 58 are approved and recorded, but answered in a way
// a terminal must not trust.
TEST_F(AuthorizeTest, AnswersATerminalCannotUse) {
    HttpReply html = authorise("1055");
    EXPECT_EQ(html.status, 500);
    EXPECT_EQ(html.contentType.rfind("text/html", 0), 0u) << html.contentType;
    EXPECT_NE(html.body.find("<html>"), std::string::npos);
    EXPECT_EQ(html.body.find("AccptrAuthstnRspn"), std::string::npos);

    HttpReply bare = authorise("1056");
    EXPECT_EQ(valueAt(bare.body, kResult + "/RspnToAuthstn/Rspn"), "APPR");
    for (const std::string& missing : {kResult + "/AuthstnCd", kTx + "/RcptTxId", kTx + "/TxId/TxRef"})
        EXPECT_FALSE(hasNode(bare.body, missing)) << missing;

    EXPECT_EQ(valueAt(authorise("1057").body, kTx + "/TxDtls/ICCRltdData").size() % 2, 1u);

    HttpReply cut = authorise("1058");
    EXPECT_EQ(cut.status, 200);
    EXPECT_EQ(cut.body.rfind("<?xml", 0), 0u);
    EXPECT_EQ(cut.body.find("</Document>"), std::string::npos) << cut.body;
}

// The log names an answered sale's card by its masked PAN (in clear only when
// asked to) and a rejected one not at all.
TEST(AuthorizeLogTest, CardNumberIsMaskedUnlessClearTextIsAsked) {
    for (bool clear : {false, true}) {
        SimSession session(clear ? std::vector<std::string>{"--log-card-data"} : std::vector<std::string>{});
        AuthorisationFields fields;
        ASSERT_EQ(session.client().postXml("/Authorize", authorisationRequest(fields)).status, 200);
        std::vector<std::string> log = session.requestLog();
        ASSERT_EQ(log.size(), 1u);
        std::string shown = clear ? fields.pan : fields.pan.substr(0, 6) + "******" + fields.pan.substr(12);
        EXPECT_NE(log.back().find(" pan=" + shown), std::string::npos) << log.back();
        if (clear) continue;

        fields.pan = "4761739001010011";
        session.client().postXml("/Authorize", authorisationRequest(fields));
        log = session.requestLog();
        EXPECT_NE(log.back().find("/Authorize 400"), std::string::npos) << log.back();
        EXPECT_NE(log.back().find("Luhn"), std::string::npos) << log.back();
        for (const std::string& line : log) EXPECT_EQ(line.find("476173900101001"), std::string::npos) << line;
    }
}

struct BrokenRequest {
    const char* name;
    std::string body;
    long status;
    std::vector<std::string> headers;  // empty: the XML headers of a terminal
};

std::vector<BrokenRequest> brokenRequests() {
    const std::string good = authorisationRequest(AuthorisationFields{});
    auto with = [](auto change) {
        AuthorisationFields fields;
        change(fields);
        return authorisationRequest(fields);
    };
    return {
        {"HeaderBeforeBody", with([](auto& f) { f.headerFirst = true; }), 400, {}},
        {"WrongNamespace", replace(good, "urn:AcceptorAuthorisationRequestV02.1", "urn:AcceptorAuthorisationRequestV02"), 400, {}},
        {"NoNamespace", replace(good, " xmlns=\"urn:AcceptorAuthorisationRequestV02.1\"", ""), 400, {}},
        {"Prefixed", replace(replace(good, "<AccptrAuthstnReq>", "<a:AccptrAuthstnReq>"), "</AccptrAuthstnReq>",
                             "</a:AccptrAuthstnReq>"), 400, {}},
        {"MessageFunction", replace(good, "<MsgFctn>AUTQ</MsgFctn>", "<MsgFctn>AUTP</MsgFctn>"), 400, {}},
        {"Currency", replace(good, "<Ccy>986</Ccy>", "<Ccy>840</Ccy>"), 400, {}},
        {"DecimalAmount", with([](auto& f) { f.amount = "10.00"; }), 400, {}},
        {"ZeroAmount", with([](auto& f) { f.amount = "0"; }), 400, {}},
        {"LowerCaseReference", with([](auto& f) { f.reference = "0123456789abcdef0123456789abcdef"; }), 400, {}},
        {"ShortReference", with([](auto& f) { f.reference = "0123456789ABCDEF"; }), 400, {}},
        {"NoInitiatorKey", replace(good, "<InitrTxId>PP12345678-25300001A1B2100</InitrTxId>", ""), 400, {}},
        {"OnlinePinWithoutBlock", replace(with([](auto& f) { f.onlinePin = false; }), "<AuthntcnMtd>FPIN", "<AuthntcnMtd>NPIN"), 400, {}},
        {"OfflinePinWithBlock", replace(good, "<AuthntcnMtd>NPIN", "<AuthntcnMtd>FPIN"), 400, {}},
        {"ShortKeySerialPart", replace(good, "<NcrptdKey>3210E00001</NcrptdKey>", "<NcrptdKey>3210E0000</NcrptdKey>"), 400, {}},
        {"ShortPinBlock", replace(good, "<NcrptdData>1A2B3C4D5E6F7081</NcrptdData>", "<NcrptdData>1A2B3C4D</NcrptdData>"), 400, {}},
        {"SaleIdInOwnElement", replace(good, "<SaleId></SaleId>", "<SaleCntxt><SaleId></SaleId></SaleCntxt>"), 400, {}},
        {"DateAfterReference", replace(replace(good, "<TxDtTm>2025-06-01T10:20:30</TxDtTm>", ""), "</TxRef>",
                                       "</TxRef><TxDtTm>2025-06-01T10:20:30</TxDtTm>"), 400, {}},
        {"DateWithZone", replace(good, "2025-06-01T10:20:30", "2025-06-01T10:20:30Z"), 400, {}},
        {"ChipWithoutCardData", with([](auto& f) { f.cardData.clear(); }), 400, {}},
        {"MerchantKeyWithDash", with([](auto& f) { f.merchantId = "1234-5678"; }), 400, {}},
        {"UnknownMerchant", with([](auto& f) { f.merchantId = "99990000"; }), 200, {}},
        {"AcceptHeader", good, 400, {"Content-Type: text/xml", "Accept: */*", "Expect:"}},
        {"ExpectHeader", good, 400, {"Content-Type: text/xml", "Accept:", "Expect: 100-continue"}},
        {"ContentTypeWithCharset", good, 400, {"Content-Type: text/xml; charset=utf-8", "Accept:", "Expect:"}},
    };
}

TEST_F(AuthorizeTest, BrokenRequestIsRejectedWithoutAnAuthorisation) {
    for (const BrokenRequest& broken : brokenRequests()) {
        SCOPED_TRACE(broken.name);
        HttpReply reply = broken.headers.empty()
                              ? session_->client().postXml("/Authorize", broken.body)
                              : session_->client().send("POST", "/Authorize", broken.body, broken.headers);
        EXPECT_EQ(reply.status, broken.status);
        EXPECT_TRUE(hasNode(reply.body, "/Document/AccptrRjctn")) << reply.body;
        EXPECT_FALSE(hasNode(reply.body, "/Document/AccptrAuthstnRspn"));
    }
}

// The late answer comes after the client's time-out; the emulator is told
// to hold it 2 s, the client waits 1 s, and stopping does not wait for it.
TEST(AuthorizeLateAnswerTest, AmountEndingIn54OutlastsTheClientTimeout) {
    SimSession session({"--auth-delay", "2"});
    AuthorisationFields fields;
    fields.amount = "1054";
    HttpReply reply = session.client().postXml("/Authorize", authorisationRequest(fields), 1000);
    EXPECT_EQ(reply.error, CURLE_OPERATION_TIMEDOUT);
    std::vector<std::string> log = session.requestLog();
    ASSERT_FALSE(log.empty());
    EXPECT_NE(log.back().find("APPR amount=1054"), std::string::npos) << log.back();
    auto stopStart = std::chrono::steady_clock::now();
    EXPECT_EQ(session.stop(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - stopStart, std::chrono::milliseconds(900));
}

} // namespace
