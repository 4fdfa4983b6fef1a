#include <gtest/gtest.h>

#include <kovra/KVRException.h>

#include "Pinpad/Commands/KVRCommandRequestBuilder.h"

#include <array>
#include <functional>
#include <string>

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
