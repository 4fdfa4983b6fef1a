#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionModel.h>

#include "Utils/KVRReachability.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <nlohmann/json.hpp>

#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

namespace {

using namespace std::chrono_literals;

struct Outcome {
    bool success = false;
    std::optional<KVRError> error;
    bool onMainWorker = false;
    std::thread::id thread;
};

// Collects the one completion of a provider call.
class CompletionProbe {
public:
    KVRCompletion block() {
        return [this](bool success, std::optional<KVRError> error) {
            promise_.set_value(Outcome{success, std::move(error), KVRQueues::isMainWorker(), std::this_thread::get_id()});
        };
    }
    Outcome wait() {
        auto future = promise_.get_future();
        EXPECT_EQ(future.wait_for(10s), std::future_status::ready);
        return future.get();
    }

private:
    std::promise<Outcome> promise_;
};

class MailProviderTest : public KVRTestFixture {
protected:
    void SetUp() override {
        KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
        exchange_.replyWith(R"({"status":"sent"})");
    }
    KVRTemporaryStore store_;
    KVRFakeExchange exchange_;
};

TEST_F(MailProviderTest, ReceiptKindsPickTheTemplateAndCompleteOnTheMainWorker) {
    auto transaction = KVRTransactionModel::create();
    transaction->setCardBrand("MasterCard");
    struct Row {
        int kind;
        bool success;
        const char* templateName;
    } rows[] = {{KVRMailProvider::kReceiptSale, true, "transaction"},
                {KVRMailProvider::kReceiptCancellation, true, "void_transaction"},
                {3, false, nullptr},
                {0, false, nullptr}};
    for (const auto& row : rows) {
        size_t before = exchange_.requests().size();
        CompletionProbe probe;
        KVRMailProvider::sendReceiptViaEmail(row.kind, transaction, "ana@example.com", true, probe.block());
        Outcome outcome = probe.wait();
        EXPECT_EQ(outcome.success, row.success) << row.kind;
        EXPECT_TRUE(outcome.onMainWorker) << row.kind;
        auto posts = exchange_.requests();
        if (row.templateName) {
            EXPECT_FALSE(outcome.error);
            ASSERT_EQ(posts.size(), before + 1);
            EXPECT_EQ(nlohmann::json::parse(posts.back().body).at("template"), row.templateName);
        } else {
            ASSERT_TRUE(outcome.error);
            EXPECT_EQ(*outcome.error, KVRErrors::emailMessageError());
            EXPECT_EQ(posts.size(), before) << "an unknown kind sends nothing";
        }
    }
}

TEST_F(MailProviderTest, FailuresOfTheServiceAreMessageErrors) {
    auto transaction = KVRTransactionModel::create();
    std::function<void(KVRFakeExchange&)> failures[] = {
        [](KVRFakeExchange& e) { e.failWith(KVRError(NSURLErrorDomain, -1004)); },
        [](KVRFakeExchange& e) { e.failWith(KVRError(NSURLErrorDomain, -1001)); },
        [](KVRFakeExchange& e) { e.replyWith("<html>503</html>"); },
        [](KVRFakeExchange& e) { e.replyWith(""); },
    };
    for (const auto& fail : failures) {
        fail(exchange_);
        CompletionProbe probe;
        KVRMailProvider::sendReceiptViaEmail(KVRMailProvider::kReceiptSale, transaction, "a@b.c", false, probe.block());
        Outcome outcome = probe.wait();
        EXPECT_FALSE(outcome.success);
        ASSERT_TRUE(outcome.error);
        EXPECT_EQ(*outcome.error, KVRErrors::emailMessageError());
    }
}

TEST_F(MailProviderTest, WithoutNetworkNothingIsSentAndTheCallerHearsAtOnce) {
    KVRTestFixture::setNetworkFlags(0);
    auto transaction = KVRTransactionModel::create();
    std::vector<Outcome> outcomes;
    auto record = [&outcomes](bool success, std::optional<KVRError> error) {
        outcomes.push_back(Outcome{success, std::move(error), false, std::this_thread::get_id()});
    };
    KVRMailProvider::sendReceiptViaEmail(KVRMailProvider::kReceiptSale, transaction, "a@b.c", true, record);
    KVRMailProvider::sendReceiptViaEmail(7, transaction, "a@b.c", true, record);
    KVRMailProvider::sendEmailFeedback("oi", record);
    ASSERT_EQ(outcomes.size(), 3u) << "reported before the calls returned";
    for (const auto& outcome : outcomes) {
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.error, KVRErrors::notConnectedToNetwork());
        EXPECT_EQ(outcome.thread, std::this_thread::get_id());
    }
    EXPECT_TRUE(exchange_.requests().empty());
}

// An application's main loop: work posted to it waits until the test runs it.
class FakeMainLoop {
public:
    void post(std::function<void()> work) {
        std::lock_guard lock(mutex_);
        queue_.push_back(std::move(work));
        posted_.notify_all();
    }
    std::function<void()> next() {
        std::unique_lock lock(mutex_);
        if (!posted_.wait_for(lock, 10s, [this] { return !queue_.empty(); })) return nullptr;
        auto work = std::move(queue_.front());
        queue_.erase(queue_.begin());
        return work;
    }

private:
    std::mutex mutex_;
    std::condition_variable posted_;
    std::vector<std::function<void()>> queue_;
};

TEST_F(MailProviderTest, FeedbackGoesToTheSupportMailboxThroughTheApplicationsExecutor) {
    FakeMainLoop loop;
    KVRQueues::setMainExecutor([&loop](std::function<void()> work) { loop.post(std::move(work)); });
    struct Row {
        std::optional<std::string> mailbox;
        const char* expected;
    } rows[] = {{std::nullopt, "suporte@kovra.com.br"}, {std::string("help@shop.example"), "help@shop.example"}};
    for (const auto& row : rows) {
        if (row.mailbox) KVRApplicationInfo::setValue("Kovra Support Mailbox", *row.mailbox);
        CompletionProbe probe;
        KVRMailProvider::sendEmailFeedback("O leitor travou", probe.block());
        auto work = loop.next();
        ASSERT_TRUE(work) << "nothing was posted to the executor";
        work();
        Outcome outcome = probe.wait();
        EXPECT_TRUE(outcome.success);
        EXPECT_EQ(outcome.thread, std::this_thread::get_id());
        auto body = nlohmann::json::parse(exchange_.requests().back().body);
        EXPECT_EQ(body, (nlohmann::json{{"template", "default"},
                                        {"mail_header", {{"subject", "Feedback - iOS"}, {"to", row.expected}}},
                                        {"body_parameters", {{"body_message", "O leitor travou"}}}}));
    }
}

}  // namespace
