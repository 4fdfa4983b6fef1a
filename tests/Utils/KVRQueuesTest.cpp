#include <gtest/gtest.h>

#include <kovra/KVRQueues.h>

#include <atomic>
#include <chrono>
#include <future>
#include <ostream>
#include <thread>

namespace {

// An application's UI loop receives the completions through its executor.
TEST(KVRQueues, CompletionsGoThroughTheInstalledMainExecutor) {
    std::atomic<int> posted{0};
    KVRQueues::setMainExecutor([&posted](std::function<void()> f) {
        ++posted;
        f();
    });
    std::promise<void> delivered;
    KVRQueues::global(KVRQueuePriority::High).async([&] { KVRQueues::deliverOnMain([&] { delivered.set_value(); }); });
    delivered.get_future().get();
    EXPECT_EQ(posted.load(), 1);
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
