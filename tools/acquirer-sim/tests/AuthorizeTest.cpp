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

constexpr const char* kResult = "/Document/AccptrAuthstnRspn/AuthstnRspn/TxRspn/AuthstnRslt";
constexpr const char* kTx = "/Document/AccptrAuthstnRspn/AuthstnRspn/Tx";

std::string at(const std::string& base, const char* rest) {
    return base + rest;
}

class AuthorizeTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { session_ = std::make_unique<SimSession>(); }
    static void TearDownTestSuite() { session_.reset(); }

    static HttpReply authorise(const AuthorisationFields& fields) {
        return session_->client().postXml("/Authorize", authorisationRequest(fields));
    }

    static std::unique_ptr<SimSession> session_;
};

std::unique_ptr<SimSession> AuthorizeTest::session_;

struct AmountCase {
    const char* amount;
    const char* response;
};

void PrintTo(const AmountCase& value, std::ostream* out) {
    *out << value.amount;
}

class AmountRuleTest : public AuthorizeTest, public ::testing::WithParamInterface<AmountCase> {};

TEST_P(AmountRuleTest, DecidesByTheLastTwoDigits) {
    AuthorisationFields fields;
    fields.amount = GetParam().amount;
    HttpReply reply = authorise(fields);

    ASSERT_EQ(reply.error, CURLE_OK);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(valueAt(reply.body, at(kResult, "/RspnToAuthstn/Rspn").c_str()), GetParam().response);
    EXPECT_TRUE(std::regex_match(valueAt(reply.body, at(kResult, "/AuthstnCd").c_str()), std::regex(R"(\d{6})")));
    EXPECT_EQ(valueAt(reply.body, at(kTx, "/TxDtls/TtlAmt").c_str()), GetParam().amount);
}

INSTANTIATE_TEST_SUITE_P(Amounts, AmountRuleTest,
                         ::testing::Values(AmountCase{"1000", "APPR"}, AmountCase{"1051", "DECL"},
                                           AmountCase{"1052", "PART"}, AmountCase{"253", "TECH"},
                                           AmountCase{"150", "APPR"}, AmountCase{"7", "APPR"},
                                           AmountCase{"5100", "APPR"}),
                         [](const auto& info) { return std::string("Amount") + info.param.amount; });

TEST_F(AuthorizeTest, AnswerEchoesTheReferenceAndIssuesUniqueReceiptKeys) {
    std::set<std::string> receipts;
    for (const char* reference : {"AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA1", "BBBBBBBBBBBBBBBBBBBBBBBBBBBBBBB2"}) {
        AuthorisationFields fields;
        fields.reference = reference;
        HttpReply reply = authorise(fields);

        EXPECT_EQ(valueAt(reply.body, at(kTx, "/TxId/TxRef").c_str()), reference);
        EXPECT_TRUE(hasNode(reply.body, at(kTx, "/TxId/TxDtTm").c_str()));
        EXPECT_EQ(valueAt(reply.body, "/Document/AccptrAuthstnRspn/Hdr/MsgFctn"), "AUTP");
        EXPECT_EQ(valueAt(reply.body, "/Document/AccptrAuthstnRspn/AuthstnRspn/Envt/MrchntId/Id"), "12345678");
        const std::string receipt = valueAt(reply.body, at(kTx, "/RcptTxId").c_str());
        EXPECT_GE(receipt.size(), 12u);
        EXPECT_LE(receipt.size(), 20u);
        receipts.insert(receipt);
    }
    EXPECT_EQ(receipts.size(), 2u);
}

TEST_F(AuthorizeTest, ChipSaleGetsIssuerDataAndStripeSaleNone) {
    AuthorisationFields chip;
    HttpReply chipReply = authorise(chip);
    const std::string issuerData = valueAt(chipReply.body, at(kTx, "/TxDtls/ICCRltdData").c_str());
    // Tag 8A "00" (approved, in ASCII) and tag 91 with ten bytes.
    EXPECT_NE(issuerData.find("8A023030"), std::string::npos) << issuerData;
    EXPECT_NE(issuerData.find("910A"), std::string::npos) << issuerData;
    // The card's cryptogram comes back first, for the receipt.
    ASSERT_EQ(chip.cardData.rfind("9F2608A1B2C3D4E5F60718", 0), 0u);
    EXPECT_EQ(issuerData.rfind("9F2608A1B2C3D4E5F60718", 0), 0u) << issuerData;

    AuthorisationFields stripe;
    stripe.entryMode = "MGST";
    stripe.cardData.clear();
    stripe.onlinePin = false;
    HttpReply stripeReply = authorise(stripe);
    EXPECT_EQ(valueAt(stripeReply.body, at(kResult, "/RspnToAuthstn/Rspn").c_str()), "APPR");
    EXPECT_FALSE(hasNode(stripeReply.body, at(kTx, "/TxDtls/ICCRltdData").c_str()));
}

TEST_F(AuthorizeTest, DeclinedChipSaleTellsTheCardSo) {
    AuthorisationFields fields;
    fields.amount = "2051";
    HttpReply reply = authorise(fields);
    EXPECT_NE(valueAt(reply.body, at(kTx, "/TxDtls/ICCRltdData").c_str()).find("8A023035"), std::string::npos);
}

// Approved and recorded, but answered in a way a terminal must not trust.
TEST_F(AuthorizeTest, AmountsEndingIn56To58AnswerApprovalsATerminalCannotUse) {
    AuthorisationFields fields;
    fields.amount = "1056";
    HttpReply bare = authorise(fields);
    EXPECT_EQ(valueAt(bare.body, at(kResult, "/RspnToAuthstn/Rspn").c_str()), "APPR");
    EXPECT_FALSE(hasNode(bare.body, at(kResult, "/AuthstnCd").c_str()));
    for (const char* missing : {"/RcptTxId", "/TxId/TxRef"}) EXPECT_FALSE(hasNode(bare.body, at(kTx, missing).c_str()));

    fields.amount = "1057";
    HttpReply odd = authorise(fields);
    EXPECT_EQ(valueAt(odd.body, at(kTx, "/TxDtls/ICCRltdData").c_str()).size() % 2, 1u);

    fields.amount = "1058";
    HttpReply cut = authorise(fields);
    EXPECT_EQ(cut.status, 200);
    EXPECT_NE(cut.body.rfind("<?xml", 0), std::string::npos);
    EXPECT_EQ(cut.body.find("</Document>"), std::string::npos) << cut.body;
}

TEST_F(AuthorizeTest, AmountEndingIn55AnswersAnHtmlErrorPage) {
    AuthorisationFields fields;
    fields.amount = "1055";
    HttpReply reply = authorise(fields);

    EXPECT_EQ(reply.status, 500);
    EXPECT_EQ(reply.contentType.rfind("text/html", 0), 0u) << reply.contentType;
    EXPECT_NE(reply.body.find("<html>"), std::string::npos);
    EXPECT_EQ(reply.body.find("AccptrAuthstnRspn"), std::string::npos);
}

TEST_F(AuthorizeTest, RejectionsAreLoggedWithoutTheCardNumber) {
    AuthorisationFields fields;
    fields.pan = "4761739001010011";
    authorise(fields);

    std::vector<std::string> log = session_->process().requestLog();
    ASSERT_FALSE(log.empty());
    const std::string& last = log.back();
    EXPECT_NE(last.find("/Authorize 400"), std::string::npos) << last;
    EXPECT_NE(last.find("Luhn"), std::string::npos) << last;
    for (const std::string& line : log) {
        EXPECT_EQ(line.find("476173900101001"), std::string::npos) << line;
    }
}

// The log names the card of an answered sale by its masked PAN, in clear only when asked to.
TEST(AuthorizeCardDataLogTest, PanIsMaskedUnlessClearTextIsAsked) {
    for (bool clear : {false, true}) {
        SimSession session(clear ? std::vector<std::string>{"--log-card-data"} : std::vector<std::string>{});
        AuthorisationFields fields;
        ASSERT_EQ(session.client().postXml("/Authorize", authorisationRequest(fields)).status, 200);
        std::vector<std::string> log = session.process().requestLog();
        ASSERT_FALSE(log.empty());
        std::string shown = clear ? fields.pan : fields.pan.substr(0, 6) + "******" + fields.pan.substr(12);
        EXPECT_NE(log.back().find(" pan=" + shown), std::string::npos) << log.back();
    }
}

// Twenty exchanges would take at least 800 ms if Nagle's algorithm held back
// every answer's second segment until the client's delayed acknowledgement.
TEST_F(AuthorizeTest, AnswersAreNotHeldBackByNagle) {
    const std::string body = authorisationRequest(AuthorisationFields{});
    session_->client().postXml("/Authorize", body);
    auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(session_->client().postXml("/Authorize", body).status, 200);
    }
    auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    EXPECT_LT(elapsed.count(), 700);
}

struct BrokenRequest {
    const char* name;
    std::string body;
    long status;
    std::vector<std::string> headers;   // empty: the library's XML headers
};

void PrintTo(const BrokenRequest& value, std::ostream* out) {
    *out << value.name;
}

class BrokenRequestTest : public AuthorizeTest, public ::testing::WithParamInterface<BrokenRequest> {};

TEST_P(BrokenRequestTest, IsRejectedWithoutAnAuthorisation) {
    const BrokenRequest& broken = GetParam();
    HttpReply reply = broken.headers.empty() ? session_->client().postXml("/Authorize", broken.body)
                                             : session_->client().send("POST", "/Authorize", broken.body, broken.headers);

    EXPECT_EQ(reply.status, broken.status);
    EXPECT_TRUE(hasNode(reply.body, "/Document/AccptrRjctn")) << reply.body;
    EXPECT_FALSE(hasNode(reply.body, "/Document/AccptrAuthstnRspn"));
}

std::vector<BrokenRequest> brokenRequests() {
    const std::string good = authorisationRequest(AuthorisationFields{});
    auto with = [](auto change) {
        AuthorisationFields fields;
        change(fields);
        return authorisationRequest(fields);
    };
    return {
        {"HeaderBeforeBody", with([](auto& f) { f.headerFirst = true; }), 400, {}},
        {"BadLuhn", with([](auto& f) { f.pan = "4761739001010011"; }), 400, {}},
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

INSTANTIATE_TEST_SUITE_P(Requests, BrokenRequestTest, ::testing::ValuesIn(brokenRequests()),
                         [](const auto& info) { return std::string(info.param.name); });

// The late answer comes after the client's time-out; the emulator is told
// to hold it 2 s, the client waits 1 s.
TEST(AuthorizeLateAnswerTest, AmountEndingIn54OutlastsTheClientTimeout) {
    SimSession session({"--auth-delay", "2"});
    AuthorisationFields fields;
    fields.amount = "1054";

    auto start = std::chrono::steady_clock::now();
    HttpReply reply = session.client().postXml("/Authorize", authorisationRequest(fields), 1000);
    auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);

    EXPECT_EQ(reply.error, CURLE_OPERATION_TIMEDOUT);
    EXPECT_GE(elapsed.count(), 900);
    EXPECT_LT(elapsed.count(), 1900);
    std::vector<std::string> log = session.process().requestLog();
    ASSERT_FALSE(log.empty());
    EXPECT_NE(log.back().find("APPR amount=1054"), std::string::npos) << log.back();
    // Stopping does not wait for the held answer.
    auto stopStart = std::chrono::steady_clock::now();
    EXPECT_EQ(session.process().stop(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - stopStart, std::chrono::milliseconds(900));
}

} // namespace
