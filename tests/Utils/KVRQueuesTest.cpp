#include <gtest/gtest.h>

#include <kovra/KVRQueues.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <chrono>
#include <future>
#include <mutex>
#include <ostream>
#include <thread>

namespace {

// A stand-in for an application's UI loop: one thread running what is posted.
class FakeMainLoop {
public:
    FakeMainLoop() : thread_([this] { run(); }) {}
    ~FakeMainLoop() {
        post({});
        thread_.join();
    }
    void post(std::function<void()> f) {
        // Notified under the lock: a pool thread may post the last item while
        // the test is already tearing the loop down.
        std::lock_guard lock(m_);
        q_.push_back(std::move(f));
        cv_.notify_one();
    }
    std::thread::id id() const { return thread_.get_id(); }

private:
    void run() {
        for (;;) {
            std::function<void()> f;
            {
                std::unique_lock lock(m_);
                cv_.wait(lock, [this] { return !q_.empty(); });
                f = std::move(q_.front());
                q_.pop_front();
            }
            if (!f) return;
            f();
        }
    }
    std::mutex m_;
    std::condition_variable cv_;
    std::deque<std::function<void()>> q_;
    std::thread thread_;
};

TEST(KVRQueues, CompletionsGoThroughTheInstalledMainExecutor) {
    FakeMainLoop loop;
    KVRQueues::setMainExecutor([&loop](std::function<void()> f) { loop.post(std::move(f)); });
    std::promise<std::thread::id> delivered;
    KVRQueues::global(KVRQueuePriority::High).async([&] {
        KVRQueues::deliverOnMain([&] { delivered.set_value(std::this_thread::get_id()); });
    });
    EXPECT_EQ(delivered.get_future().get(), loop.id());
}

TEST(KVRQueues, WithoutExecutorCompletionsRunOnTheMainWorker) {
    std::promise<bool> onWorker;
    KVRQueues::global(KVRQueuePriority::Background).async([&] {
        KVRQueues::deliverOnMain([&] { onWorker.set_value(KVRQueues::isMainWorker()); });
    });
    EXPECT_TRUE(onWorker.get_future().get());
    EXPECT_FALSE(KVRQueues::isMainWorker());
}

TEST(KVRQueues, MainTaskMaySyncIntoAPoolAndIntoItselfWithoutDeadlock) {
    std::atomic<int> steps{0};
    auto done = std::async(std::launch::async, [&] {
        KVRQueues::main().sync([&] {
            KVRQueues::global(KVRQueuePriority::High).sync([&] { ++steps; });
            KVRQueues::main().sync([&] { ++steps; });  // re-entrant on the serial worker
            ++steps;
        });
    });
    ASSERT_EQ(done.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(steps.load(), 3);
}

TEST(KVRQueues, MainWorkerIsSerialAndSyncRethrows) {
    std::vector<int> order;
    for (int i = 0; i < 50; ++i) KVRQueues::main().async([&order, i] { order.push_back(i); });
    KVRQueues::main().sync([] {});
    ASSERT_EQ(order.size(), 50u);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(order[i], i);
    EXPECT_THROW(KVRQueues::main().sync([] { throw std::runtime_error("boom"); }), std::runtime_error);
    // the worker survives an exception escaping an async task
    KVRQueues::main().async([] { throw std::runtime_error("ignored"); });
    bool ran = false;
    KVRQueues::main().sync([&] { ran = true; });
    EXPECT_TRUE(ran);
}

}  // namespace
