#include <gtest/gtest.h>

#include <kovra/KVRException.h>
#include <kovra/KVRNotificationCenter.h>
#include <kovra/KVRNumber.h>
#include <kovra/KVRVersion.h>

#include "Utils/KVRArrayUtil.h"
#include "Utils/KVRStringUtil.h"
#include "Utils/KVRUUID.h"
#include "testing/KVRTestFixture.h"

#include <atomic>
#include <future>
#include <regex>
#include <ostream>
#include <thread>

namespace {

TEST(KVRNumber, PrintsLikeThePlatform) {
    EXPECT_EQ(KVRNumber(1000).description(), "1000");
    EXPECT_EQ(KVRNumber(10.5).description(), "10.5");
    EXPECT_EQ(KVRNumber(1234.5).description(), "1234.5");
    EXPECT_EQ(KVRNumber(0.1).description(), "0.1");
    EXPECT_EQ(KVRNumber(1000.0).description(), "1000");
    EXPECT_EQ(KVRNumber(-7).description(), "-7");
    EXPECT_EQ(KVRNumber::fromString("1234").description(), "1234");
    EXPECT_TRUE(KVRNumber::fromString("1234").isInteger());
    EXPECT_EQ(KVRNumber::fromString("10.5").description(), "10.5");
    EXPECT_EQ(KVRNumber::fromString("abc").longLongValue(), 0);
    EXPECT_EQ(KVRNumber(10.9).intValue(), 10);
    EXPECT_EQ(KVRNumber(10), KVRNumber(10.0));
}

TEST(KVRStringUtil, SplitKeepsEmptyPiecesLikeThePlatform) {
    using V = std::vector<std::string>;
    EXPECT_EQ(KVRStringUtil::split("4111=2512101", "="), (V{"4111", "2512101"}));
    EXPECT_EQ(KVRStringUtil::split("", "="), (V{""}));
    EXPECT_EQ(KVRStringUtil::split("a==b=", "="), (V{"a", "", "b", ""}));
    EXPECT_EQ(KVRStringUtil::leadingInteger("  42abc"), 42);
    EXPECT_EQ(KVRStringUtil::leadingInteger("   "), 0);
    EXPECT_EQ(KVRStringUtil::leadingInteger("99999999999999999999999"), LLONG_MAX);
    EXPECT_EQ(KVRStringUtil::safeSubstr("abc", 5, 2), "");
    EXPECT_EQ(KVRStringUtil::format("%s-%03d", "x", 7), "x-007");
}

TEST(KVRUUID, RandomUuidsAreUpperCaseVersionFourAndDistinct) {
    std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::string a = KVRUUID::uuidString(), b = KVRUUID::uuidString();
    EXPECT_TRUE(std::regex_match(a, form)) << a;
    EXPECT_NE(a, b);
    KVRTestFixture::setUuidGenerator([] { return std::string("FIXED"); });
    EXPECT_EQ(KVRUUID::uuidString(), "FIXED");
    KVRTestFixture::setUuidGenerator({});
    EXPECT_NE(KVRUUID::uuidString(), "FIXED");
}

TEST(KVRArrayUtil, SortsByPropertyStablyBothWays) {
    struct Row {
        int key;
        char tag;
    };
    std::vector<Row> rows = {{2, 'a'}, {1, 'b'}, {2, 'c'}, {3, 'd'}};
    auto asc = KVRArrayUtil::sortArray(rows, &Row::key, true);
    auto desc = KVRArrayUtil::sortArray(rows, &Row::key, false);
    std::string a, d;
    for (auto& r : asc) a += r.tag;
    for (auto& r : desc) d += r.tag;
    EXPECT_EQ(a, "bacd");
    EXPECT_EQ(d, "dacb");
}

TEST(KVRNotificationCenter, ObserversRunOnThePostingThreadUntilRemoved) {
    auto& center = KVRNotificationCenter::defaultCenter();
    std::vector<std::string> seen;
    std::thread::id where;
    auto token = center.addObserver("KVRTestNote", [&](const KVRNotification& n) {
        seen.push_back(std::any_cast<std::string>(n.object));
        where = std::this_thread::get_id();
    });
    center.postNotification("KVRTestNote", std::string("one"));
    center.postNotification("OtherName", std::string("ignored"));
    center.removeObserver(token);
    center.postNotification("KVRTestNote", std::string("two"));
    EXPECT_EQ(seen, std::vector<std::string>{"one"});
    EXPECT_EQ(where, std::this_thread::get_id());
}

// An object that removes its observer in its destructor must not be called
// afterwards, even while another thread is posting to it.
TEST(KVRNotificationCenter, RemovalWaitsForACallRunningOnAnotherThread) {
    auto& center = KVRNotificationCenter::defaultCenter();
    std::promise<void> entered;
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    std::atomic<bool> running{false};
    auto token = center.addObserver("KVRTestSlowNote", [&](const KVRNotification&) {
        running = true;
        entered.set_value();
        released.wait();
        running = false;
    });
    std::thread poster([&] { center.postNotification("KVRTestSlowNote"); });
    entered.get_future().wait();

    auto removal = std::async(std::launch::async, [&] {
        center.removeObserver(token);
        return running.load();
    });
    // Held long enough for a removal that does not wait to return first.
    bool returnedWhileHeld = removal.wait_for(std::chrono::milliseconds(200)) == std::future_status::ready;
    release.set_value();
    EXPECT_FALSE(removal.get()) << "removeObserver returned while its observer was running";
    EXPECT_FALSE(returnedWhileHeld);
    poster.join();
}

TEST(KVRNotificationCenter, ObserversMayRemoveThemselvesAndOthersDuringAPost) {
    auto& center = KVRNotificationCenter::defaultCenter();
    std::vector<std::string> calls;
    KVRNotificationCenter::Token first = 0, second = 0;
    first = center.addObserver("KVRTestNote", [&](const KVRNotification&) {
        calls.push_back("first");
        center.removeObserver(first);  // on its own thread: must not wait for itself
        center.removeObserver(second);
    });
    second = center.addObserver("KVRTestNote", [&](const KVRNotification&) { calls.push_back("second"); });
    center.postNotification("KVRTestNote");
    center.postNotification("KVRTestNote");
    EXPECT_EQ(calls, std::vector<std::string>{"first"}) << "a removed observer is not called, even later in the same post";
}

TEST(KVRVersion, ConstantsMatchTheProjectVersion) {
    EXPECT_STREQ(KovraSDKVersionString, "0.2.0");
    EXPECT_EQ(KovraSDKVersionNumber, 200);
    KVRException e("String doesn't fit", "reason");
    EXPECT_EQ(e.name(), "String doesn't fit");
    EXPECT_EQ(e.reason(), "reason");
}

}  // namespace
