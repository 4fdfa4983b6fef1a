// "/send": what the mail service accepts, and that accepted mails land in
// the outbox exactly as sent.
#include "Messages.h"
#include "SimSession.h"
#include "testing/KVRFiles.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using nlohmann::json;

class MailTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { session_ = std::make_unique<SimSession>(); }
    static void TearDownTestSuite() { session_.reset(); }

    static HttpReply send(const json& mail) { return session_->client().postJson("/send", mail.dump()); }
    static std::filesystem::path outbox() { return session_->state() + "/outbox"; }
    static size_t outboxSize() {
        return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(outbox()), {}));
    }

    static std::unique_ptr<SimSession> session_;
};

std::unique_ptr<SimSession> MailTest::session_;

TEST_F(MailTest, AcceptedMailsAreKeptInTheOutboxAsSent) {
    json receipt = saleReceiptMail();
    json cancellation = saleReceiptMail();
    cancellation["template"] = "void_transaction";
    cancellation["mail_header"]["subject"] = "Comprovante de cancelamento";
    // A stripe sale has no AID to show.
    cancellation["body_parameters"]["transaction_aid"] = "";
    cancellation["body_parameters"]["display_aid_arqc"] = "false";
    json feedback = {{"template", "default"},
                     {"mail_header", {{"subject", "Feedback - iOS"}, {"to", "suporte@kovra.example"}}},
                     {"body_parameters", {{"body_message", "Tudo certo"}}}};

    const size_t before = outboxSize();
    for (const json& mail : {receipt, cancellation, feedback}) {
        HttpReply reply = send(mail);
        ASSERT_EQ(reply.status, 200) << reply.body;
        EXPECT_EQ(json::parse(reply.body), json({{"status", "sent"}}));
    }
    ASSERT_EQ(outboxSize(), before + 3);
    const std::string last = KVRFiles::read(outbox() / (std::to_string(before + 3) + ".json"));
    EXPECT_EQ(json::parse(last), feedback);
    EXPECT_NE(last.find("\n  \"template\""), std::string::npos) << "not pretty-printed: " << last;
    EXPECT_EQ(json::parse(KVRFiles::read(outbox() / (std::to_string(before + 1) + ".json"))), receipt);
}

json& params(json& mail) {
    return mail["body_parameters"];
}

TEST_F(MailTest, BrokenMailIsRefusedAndNotKept) {
    const std::vector<std::pair<const char*, void (*)(json&)>> broken{
        {"NoTemplate", [](json& m) { m.erase("template"); }},
        {"UnknownTemplate", [](json& m) { m["template"] = "receipt"; }},
        {"NoDestination", [](json& m) { m["mail_header"].erase("to"); }},
        {"DestinationNotAnAddress", [](json& m) { m["mail_header"]["to"] = "cliente"; }},
        {"NoSubject", [](json& m) { m["mail_header"].erase("subject"); }},
        {"SaleSubjectOnCancellation", [](json& m) { m["template"] = "void_transaction"; }},
        {"MissingParameter", [](json& m) { params(m).erase("transaction_arqc"); }},
        {"ExtraParameter", [](json& m) { params(m)["body_message"] = "x"; }},
        {"NumberNotText", [](json& m) { params(m)["transaction_kovra_id"] = 123456; }},
        {"AmountWithPoint", [](json& m) { params(m)["transaction_amount"] = "10.00"; }},
        {"SinglePaymentAsZero", [](json& m) { params(m)["card_brand"] = "Visa - Crédito 0"; }},
        {"DateUnsplit", [](json& m) { params(m)["transaction_date"] = "01/06/2025 - 10:20"; }},
        {"WholeCardNumber", [](json& m) { params(m)["client_masked_card_number"] = "4761739001010010"; }},
        {"AidShownButEmpty", [](json& m) { params(m)["transaction_aid"] = ""; }},
        {"FlagNotBoolean", [](json& m) { params(m)["display_company_information"] = "yes"; }},
        {"DefaultWithReceiptKeys", [](json& m) { m["template"] = "default"; }},
        {"NotAnObject", [](json& m) { m = json::array({1, 2}); }}};
    for (const auto& [name, change] : broken) {
        SCOPED_TRACE(name);
        json mail = saleReceiptMail();
        change(mail);
        const size_t before = outboxSize();
        HttpReply reply = send(mail);
        EXPECT_EQ(reply.status, 400);
        json answer = json::parse(reply.body, nullptr, false);
        EXPECT_EQ(answer.value("status", ""), "error") << reply.body;
        EXPECT_FALSE(answer.value("error", "").empty());
        EXPECT_EQ(outboxSize(), before);
    }
}

TEST_F(MailTest, RequestThatIsNotJsonOrLacksItsHeadersIsRefused) {
    HttpsClient& client = session_->client();
    EXPECT_EQ(client.postJson("/send", "{\"template\":").status, 400);
    const std::string body = saleReceiptMail().dump();
    EXPECT_EQ(client.send("POST", "/send", body, {"Content-Type: application/json", "Accept:", "Expect:"}).status, 400);
    EXPECT_EQ(client.send("POST", "/send", body, {"Content-Type: text/plain", "Accept: application/json", "Expect:"}).status, 400);
}

} // namespace
