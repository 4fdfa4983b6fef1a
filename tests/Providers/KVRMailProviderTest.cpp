#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRTransactionModel.h>

#include "Utils/KVRReachability.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRTemporaryStore.h"

#include <nlohmann/json.hpp>

namespace {

class MailProviderTest : public ::testing::Test {
protected:
    void SetUp() override {
        KVRReachability::setFlagsOverride(KVRReachability::kFlagReachable);
        exchange_.replyWith(R"({"status":"sent"})");
    }
    void TearDown() override {
        KVRReachability::setFlagsOverride(std::nullopt);
        KVRApplicationInfo::removeValue("Kovra Support Mailbox");
    }
    KVRTemporaryStore store_;
    KVRFakeExchange exchange_;
};

TEST_F(MailProviderTest, ReceiptKindsPickTheTemplateAndOtherKindsSendNothing) {
    auto transaction = KVRTransactionModel::create();
    transaction->setCardBrand("MasterCard");
    struct Row {
        int kind;
        const char* templateName;
    } rows[] = {{KVRMailProvider::kReceiptSale, "transaction"},
                {KVRMailProvider::kReceiptCancellation, "void_transaction"},
                {3, nullptr},
                {0, nullptr}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.kind);
        size_t before = exchange_.requests().size();
        auto call = KVRCompletionRecorder::firstCall([&](KVRCompletion done) {
            KVRMailProvider::sendReceiptViaEmail(row.kind, transaction, "ana@example.com", true, done);
        });
        auto posts = exchange_.requests();
        EXPECT_EQ(call.success, row.templateName != nullptr);
        if (row.templateName) {
            ASSERT_EQ(posts.size(), before + 1);
            EXPECT_EQ(nlohmann::json::parse(posts.back().body).at("template"), row.templateName);
        } else {
            EXPECT_EQ(call.error, KVRErrors::emailMessageError());
            EXPECT_EQ(posts.size(), before);
        }
    }
}

TEST_F(MailProviderTest, FailuresOfTheServiceAreMessageErrors) {
    auto transaction = KVRTransactionModel::create();
    std::function<void(KVRFakeExchange&)> failures[] = {
        [](KVRFakeExchange& e) { e.failWith(KVRError(NSURLErrorDomain, -1004)); },
        [](KVRFakeExchange& e) { e.replyWith("<html>503</html>"); },
        [](KVRFakeExchange& e) { e.replyWith(""); },
    };
    for (const auto& fail : failures) {
        fail(exchange_);
        auto call = KVRCompletionRecorder::firstCall([&](KVRCompletion done) {
            KVRMailProvider::sendReceiptViaEmail(KVRMailProvider::kReceiptSale, transaction, "a@b.c", false, done);
        });
        EXPECT_FALSE(call.success);
        EXPECT_EQ(call.error, KVRErrors::emailMessageError());
    }
}

TEST_F(MailProviderTest, FeedbackGoesToTheSupportMailbox) {
    struct Row {
        std::optional<std::string> mailbox;
        const char* expected;
    } rows[] = {{std::nullopt, "suporte@kovra.com.br"}, {std::string("help@shop.example"), "help@shop.example"}};
    for (const auto& row : rows) {
        if (row.mailbox) KVRApplicationInfo::setValue("Kovra Support Mailbox", *row.mailbox);
        EXPECT_TRUE(KVRCompletionRecorder::firstCall([](KVRCompletion done) { KVRMailProvider::sendEmailFeedback("O leitor travou", done); }).success);
        EXPECT_EQ(nlohmann::json::parse(exchange_.requests().back().body).at("mail_header"),
                  (nlohmann::json{{"subject", "Feedback - iOS"}, {"to", row.expected}}));
    }
}

}  // namespace
