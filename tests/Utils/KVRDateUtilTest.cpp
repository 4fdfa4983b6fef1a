#include <gtest/gtest.h>

#include "Utils/KVRDateUtil.h"

#include <ctime>
#include "testing/KVRLocalTime.h"

namespace {

TEST(KVRDateUtil, FormatsEveryPatternTheLibraryUses) {
    auto date = kvrtest::localTime(2015, 3, 3, 13, 5, 9);
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyyy-MM-dd'T'HH:mm:ss", date), "2015-03-03T13:05:09");
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyyy-MM", date), "2015-03");
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyMM", date), "1503");
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyMMdd", date), "150303");
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("hhmmss", date), "010509");  // 12-hour clock
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("dd/MM/yyyy '-' HH:mm", kvrtest::localTime(2024, 3, 5, 14, 7, 0)),
              "05/03/2024 - 14:07");
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("hhmmss", kvrtest::localTime(2015, 3, 3, 0, 30, 5)), "123005");
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yy 'o''clock'", date), "15 o'clock");
}

TEST(KVRDateUtil, ParsesWhatItFormats) {
    auto date = kvrtest::localTime(2024, 3, 5, 14, 7, 0);
    for (const char* pattern : {"yyyy-MM-dd'T'HH:mm:ss", "dd/MM/yyyy '-' HH:mm", "yyMMdd"}) {
        SCOPED_TRACE(pattern);
        auto text = KVRDateUtil::dateStringWithFormat(pattern, date);
        auto parsed = KVRDateUtil::buildDateWithString(text, pattern);
        ASSERT_TRUE(parsed.has_value());
        EXPECT_EQ(KVRDateUtil::dateStringWithFormat(pattern, *parsed), text);
    }
    EXPECT_EQ(KVRDateUtil::buildDateWithString("05/03/2024 - 14:07", "dd/MM/yyyy '-' HH:mm"), date);
}

TEST(KVRDateUtil, TwoDigitYearsFallInTheEightyTwentyWindow) {
    auto expiry = KVRDateUtil::buildDateWithString("4912", "yyMM");
    ASSERT_TRUE(expiry);
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyyy-MM", *expiry), "1949-12");
    auto recent = KVRDateUtil::buildDateWithString("2512", "yyMM");
    ASSERT_TRUE(recent);
    EXPECT_EQ(KVRDateUtil::dateStringWithFormat("yyyy-MM-dd", *recent), "2025-12-01");
}

TEST(KVRDateUtil, UnparsableTextGivesNoDate) {
    for (const char* text : {"", "25", "2513", "25x2", "251201", "abcd"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(KVRDateUtil::buildDateWithString(text, "yyMM"));
    }
    EXPECT_FALSE(KVRDateUtil::buildDateWithString("31/02/2024 - 10:00", "dd/MM/yyyy '-' HH:mm"));
    EXPECT_FALSE(KVRDateUtil::buildDateWithString("05/03/2024 14:07", "dd/MM/yyyy '-' HH:mm"));
}

}  // namespace
