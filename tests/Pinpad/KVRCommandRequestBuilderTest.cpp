#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Pinpad/Commands/KVRCommandRequestBuilder.h"

#include <array>
#include <ctime>
#include <functional>
#include <string>
#include "testing/KVRLocalTime.h"

namespace {

using Builder = KVRCommandRequestBuilder;

// Runs a writer and returns the exception it raised, or none.
std::optional<KVRException> raised(const std::function<void()>& write) {
    try {
        write();
    } catch (const KVRException& e) {
        return e;
    }
    return std::nullopt;
}

TEST(KVRCommandRequestBuilder, WritersPadAndAlignToTheirWidths) {
    struct Case {
        const char* name;
        std::function<void(Builder&)> write;
        std::string expected;
    };
    auto at = kvrtest::localTime(2015, 3, 3, 13, 5, 9);
    const Case cases[] = {
        {"int padded with zeros", [](Builder& b) { b.appendInt(8, 2); }, "08"},
        {"int exactly its width", [](Builder& b) { b.appendInt(99, 2); }, "99"},
        {"long", [](Builder& b) { b.appendLong(123456789012LL, 12); }, "123456789012"},
        {"long padded", [](Builder& b) { b.appendLong(1000, 12); }, "000000001000"},
        {"bools", [](Builder& b) { b.appendBool(false); b.appendBool(true); }, "01"},
        {"right-filled empty", [](Builder& b) { b.appendStringRight("", 32, ' '); }, std::string(32, ' ')},
        {"right-filled", [](Builder& b) { b.appendStringRight("ab", 4, '.'); }, "ab.."},
        {"left-filled", [](Builder& b) { b.appendStringLeft("ab", 4, ' '); }, "  ab"},
        {"exact", [](Builder& b) { b.appendString("ABC", 3); }, "ABC"},
        {"date", [at](Builder& b) { b.appendDate(at); }, "150303"},
        {"time on the 12-hour clock", [at](Builder& b) { b.appendTime(at); }, "010509"},
        {"date pattern right-filled", [at](Builder& b) { b.appendNSDate(at, "yyyy", 6); }, "2015  "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        char buffer[KVRCommandBufferSize];
        Builder b(buffer);
        c.write(b);
        EXPECT_EQ(std::string(buffer), c.expected);
        EXPECT_EQ(b.position(), static_cast<int32_t>(c.expected.size()));
    }
}

TEST(KVRCommandRequestBuilder, WidthViolationsRaiseAndWriteNothing) {
    struct Case {
        std::function<void(Builder&)> write;
        const char* name;
        const char* reason;
    };
    const Case cases[] = {
        {[](Builder& b) { b.appendInt(123, 2); }, "String doesn't fit", "String has a length of 3 while the limit is 2"},
        {[](Builder& b) { b.appendInt(-5, 1); }, "String doesn't fit", "String has a length of 2 while the limit is 1"},
        {[](Builder& b) { b.appendStringRight("abcde", 4, ' '); }, "String doesn't fit",
         "String has a length of 5 while the limit is 4"},
        {[](Builder& b) { b.appendStringLeft("abcde", 4, ' '); }, "String doesn't fit",
         "String has a length of 5 while the limit is 4"},
        {[](Builder& b) { b.appendString("ab", 3); }, "String doesn't fit",
         "String has a length of 2 while the desired is 3"},
        {[](Builder& b) { b.appendString("abcd", 3); }, "String doesn't fit",
         "String has a length of 4 while the desired is 3"},
        {[](Builder& b) { b.stopCommandBlock(); }, "StopCommandBlock called before StartCommandBlock",
         "StopCommandBlock called before StartCommandBlock"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        char buffer[KVRCommandBufferSize];
        Builder b(buffer);
        b.appendString("XYZ", 3);
        auto e = raised([&] { c.write(b); });
        ASSERT_TRUE(e.has_value());
        EXPECT_EQ(e->name(), c.name);
        EXPECT_EQ(e->reason(), c.reason);
        EXPECT_EQ(std::string(buffer), "XYZ");
        EXPECT_EQ(b.position(), 3);
    }
}

TEST(KVRCommandRequestBuilder, BlocksCountTheBytesAfterTheirLengthAndNest) {
    char buffer[KVRCommandBufferSize];
    Builder b(buffer);
    b.appendString("TLR", 3);
    b.startCommandBlock();
    b.appendInt(1, 2);
    b.startCommandBlock();
    b.appendString("ABCD", 4);
    b.stopCommandBlock();
    b.stopCommandBlock(5);
    EXPECT_EQ(std::string(buffer), "TLR01401004ABCD");
    EXPECT_EQ(b.position(), 15);

    // A block length must fit its three digits.
    for (int size : {999, 1000}) {
        Builder block(buffer);
        block.startCommandBlock();
        block.appendStringRight("", size, 'x');
        auto e = raised([&] { block.stopCommandBlock(); });
        EXPECT_EQ(e.has_value(), size == 1000) << size;
        if (e) EXPECT_EQ(e->reason(), "Integer has a length of 4 while the limit is 3");
        else EXPECT_EQ(std::string(buffer, 3), "999");
    }
}

TEST(KVRCommandRequestBuilder, RefusesToWritePastTheBuffer) {
    // Guard bytes around a 16-byte buffer catch any write beyond it.
    std::array<char, 48> memory;
    memory.fill('#');
    char* buffer = memory.data() + 16;
    Builder b(buffer, 16);
    b.appendString("0123456789", 10);
    auto e = raised([&] { b.appendStringRight("abc", 6, ' '); });
    ASSERT_TRUE(e.has_value());
    EXPECT_EQ(e->name(), "Request doesn't fit");
    EXPECT_EQ(std::string(buffer), "0123456789");
    b.appendStringLeft("abc", 5, ' ');  // exactly fills 15 bytes and the NUL
    EXPECT_EQ(std::string(buffer), "0123456789  abc");
    EXPECT_THROW(b.appendBool(true), KVRException);
    EXPECT_THROW(b.startCommandBlock(), KVRException);
    for (size_t i = 0; i < 16; ++i) EXPECT_EQ(memory[i], '#');
    for (size_t i = 32; i < memory.size(); ++i) EXPECT_EQ(memory[i], '#');
}

}  // namespace
