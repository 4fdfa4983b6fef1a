#include <gtest/gtest.h>

#include "Host/KVRDataCoding.h"

#include <random>
#include <string>

namespace {

std::string allBytes() {
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
    return bytes;
}

TEST(KVRDataCoding, Base64BothWaysWithLinesAndLenientWhiteSpaceButNothingNoEncoderProduces) {
    const std::pair<const char*, const char*> vectors[] = {{"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},  {"foob", "Zm9vYg=="},  {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, encoded] : vectors) {
        EXPECT_EQ(KVRDataCoding::base64Encoding(plain), encoded);
        EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(encoded), plain);
    }
    // 256 bytes are 344 characters: five full lines and one of 24.
    std::string bytes = allBytes();
    std::string lines = KVRDataCoding::base64EncodingWithLineLength(bytes, 64);
    std::string expected = KVRDataCoding::base64Encoding(bytes);
    for (size_t at = 64; at < expected.size(); at += 66) expected.insert(at, "\r\n");
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(lines), bytes);
    EXPECT_EQ(KVRDataCoding::base64EncodingWithLineLength(bytes, 0), KVRDataCoding::base64Encoding(bytes));
    EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(" Zm9v\nYmE "), "fooba");
    EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString("Zm9vYg"), "foob");  // padding left out
    for (const char* bad : {"Zm9v!", "Z", "Zm9vY", "Zg=x", "Zg===", "=Zg", "Zm9v=", "Zm8==", "Zm-_"}) {
        EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(bad), std::nullopt) << bad;
    }
}

TEST(KVRDataCoding, GzipRoundTrips) {
    std::mt19937 random(11);
    std::string noise(100000, '\0');
    for (auto& c : noise) c = static_cast<char>(random());
    for (const auto& input : {std::string("x"), std::string(200000, 'a'), noise, allBytes()}) {
        auto packed = KVRDataCoding::gzipDeflate(input);
        ASSERT_TRUE(packed);
        EXPECT_TRUE(KVRDataCoding::isGzip(*packed));
        EXPECT_EQ(KVRDataCoding::gzipInflate(*packed), input);
    }
    EXPECT_EQ(KVRDataCoding::gzipDeflate(""), "");
    EXPECT_EQ(KVRDataCoding::gzipInflate(""), "");
}

TEST(KVRDataCoding, InflateRefusesTruncatedCorruptAndOversizedData) {
    std::mt19937 random(3);
    std::string input(100000, '\0');
    for (auto& c : input) c = static_cast<char>('a' + random() % 4);
    std::string packed = *KVRDataCoding::gzipDeflate(input);
    std::string corrupt = packed;
    corrupt[corrupt.size() / 2] ^= 0x55;
    std::string badChecksum = packed;
    badChecksum[badChecksum.size() - 6] ^= 0x01;
    for (const std::string& bad : {packed.substr(0, packed.size() - 10), std::string("not compressed at all"), corrupt,
                                   badChecksum}) {
        EXPECT_FALSE(KVRDataCoding::gzipInflate(bad).has_value());
    }
    EXPECT_FALSE(KVRDataCoding::gzipInflate(packed, 50000).has_value());
    EXPECT_TRUE(KVRDataCoding::gzipInflate(packed, 100000) == input);
}

}  // namespace
