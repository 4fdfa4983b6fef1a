#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRTransactionModel.h>

#include "Utils/KVRReachability.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <nlohmann/json.hpp>

namespace {

class MailProviderTest : public KVRTestFixture {
protected:
    void SetUp() override {
        KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
    }
    KVRTemporaryStore store_;
    KVRFakeExchange exchange_;
};

TEST_F(MailProviderTest, ReceiptKindsPickTheTemplateAndAnythingElseIsAMessageError) {
    auto transaction = KVRTransactionModel::create();
    transaction->setCardBrand("MasterCard");
    auto sent = [](KVRFakeExchange& e) { e.replyWith(R"({"status":"sent"})"); };
    struct Row {
        const char* name;
        int kind;
        std::function<void(KVRFakeExchange&)> service;
        const char* templateName;
        size_t posts;
    } rows[] = {
        {"sale", KVRMailProvider::kReceiptSale, sent, "transaction", 1},
        {"cancellation", KVRMailProvider::kReceiptCancellation, sent, "void_transaction", 1},
        {"unknown kind", 3, sent, nullptr, 0},
        {"no kind", 0, sent, nullptr, 0},
        {"unreachable", 1, [](KVRFakeExchange& e) { e.failWith(KVRError(NSURLErrorDomain, -1004)); }, nullptr, 1},
        {"HTML page", 1, [](KVRFakeExchange& e) { e.replyWith("<html>503</html>"); }, nullptr, 1},
        {"empty reply", 1, [](KVRFakeExchange& e) { e.replyWith(""); }, nullptr, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        row.service(exchange_);
        size_t before = exchange_.requests().size();
        auto call = KVRCompletionRecorder::firstCall([&](KVRCompletion done) {
            KVRMailProvider::sendReceiptViaEmail(row.kind, transaction, "ana@example.com", true, done);
        });
        auto posts = exchange_.requests();
        ASSERT_EQ(posts.size(), before + row.posts);
        EXPECT_EQ(call.success, row.templateName != nullptr);
        if (row.templateName) {
            EXPECT_EQ(nlohmann::json::parse(posts.back().body).at("template"), row.templateName);
        } else {
            EXPECT_EQ(call.error, KVRErrors::emailMessageError());
        }
    }
}

TEST_F(MailProviderTest, FeedbackGoesToTheSupportMailbox) {
    struct Row {
        std::optional<std::string> mailbox;
        const char* expected;
    } rows[] = {{std::nullopt, "suporte@kovra.com.br"}, {std::string("help@shop.example"), "help@shop.example"}};
    exchange_.replyWith(R"({"status":"sent"})");
    for (const auto& row : rows) {
        if (row.mailbox) KVRApplicationInfo::setValue("Kovra Support Mailbox", *row.mailbox);
        EXPECT_TRUE(KVRCompletionRecorder::firstCall([](KVRCompletion done) { KVRMailProvider::sendEmailFeedback("O leitor travou", done); }).success);
        EXPECT_EQ(nlohmann::json::parse(exchange_.requests().back().body).at("mail_header"),
                  (nlohmann::json{{"subject", "Feedback - iOS"}, {"to", row.expected}}));
    }
}

}  // namespace
