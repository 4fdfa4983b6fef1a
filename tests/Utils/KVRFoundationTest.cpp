#include <gtest/gtest.h>

#include <kovra/KVRNotificationCenter.h>
#include <kovra/KVRNumber.h>

#include "Utils/KVRArrayUtil.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"
#include "Utils/KVRUUID.h"

#include <atomic>
#include <future>
#include <regex>
#include <ostream>
#include <thread>

#include "testing/KVRLocalTime.h"

namespace {

// Amounts are written into requests and receipts with these texts.
TEST(KVRNumber, PrintsLikeThePlatform) {
    const std::pair<KVRNumber, const char*> table[] = {{KVRNumber(1000), "1000"},  {KVRNumber(10.5), "10.5"},
                                                       {KVRNumber(0.1), "0.1"},    {KVRNumber(1000.0), "1000"},
                                                       {KVRNumber(-7), "-7"},      {KVRNumber::fromString("1234"), "1234"},
                                                       {KVRNumber::fromString("10.5"), "10.5"}};
    for (const auto& [number, text] : table) EXPECT_EQ(number.description(), text);
    EXPECT_TRUE(KVRNumber::fromString("1234").isInteger());
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
    EXPECT_EQ(KVRStringUtil::leadingInteger("99999999999999999999999"), LLONG_MAX);
    EXPECT_EQ(KVRStringUtil::safeSubstr("abc", 5, 2), "");
}

TEST(KVRUUID, RandomUuidsAreUpperCaseVersionFourAndDistinct) {
    std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::string a = KVRUUID::uuidString(), b = KVRUUID::uuidString();
    EXPECT_TRUE(std::regex_match(a, form)) << a;
    EXPECT_NE(a, b);
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

TEST(KVRDateUtil, FormatsAndParsesEveryPatternTheLibraryUses) {
    auto date = kvrtest::localTime(2015, 3, 3, 13, 5, 9);
    const std::pair<const char*, const char*> formats[] = {
        {"yyyy-MM-dd'T'HH:mm:ss", "2015-03-03T13:05:09"}, {"yyMMdd", "150303"},
        {"hhmmss", "010509"},  // 12-hour clock
        {"dd/MM/yyyy '-' HH:mm", "03/03/2015 - 13:05"},    {"yy 'o''clock'", "15 o'clock"}};
    for (const auto& [pattern, text] : formats) EXPECT_EQ(KVRDateUtil::dateStringWithFormat(pattern, date), text);
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("hhmmss", kvrtest::localTime(2015, 3, 3, 0, 30, 5)), "123005");
    EXPECT_EQ(KVRDateUtil::buildDateWithString("05/03/2024 - 14:07", "dd/MM/yyyy '-' HH:mm"),
              kvrtest::localTime(2024, 3, 5, 14, 7, 0));
    EXPECT_EQ(KVRDateUtil::buildDateWithString("2024-03-05T14:07:09", "yyyy-MM-dd'T'HH:mm:ss"),
              kvrtest::localTime(2024, 3, 5, 14, 7, 9));

    // Two-digit years reach eighty years back and twenty ahead.
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyyy-MM", *KVRDateUtil::buildDateWithString("4912", "yyMM")), "1949-12");
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyyy-MM-dd", *KVRDateUtil::buildDateWithString("2512", "yyMM")),
              "2025-12-01");
    for (const char* text : {"", "25", "2513", "25x2", "251201"}) {
        EXPECT_FALSE(KVRDateUtil::buildDateWithString(text, "yyMM")) << text;
    }
    EXPECT_FALSE(KVRDateUtil::buildDateWithString("31/02/2024 - 10:00", "dd/MM/yyyy '-' HH:mm"));
    EXPECT_FALSE(KVRDateUtil::buildDateWithString("05/03/2024 14:07", "dd/MM/yyyy '-' HH:mm"));
}

}  // namespace
