#include <gtest/gtest.h>

#include "Host/KVRDataCoding.h"

#include <zlib.h>

#include <random>
#include <string>

namespace {

std::string allBytes() {
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
    return bytes;
}

TEST(KVRDataCoding, Base64MatchesTheRfcVectorsBothWays) {
    const std::pair<const char*, const char*> vectors[] = {{"", ""},         {"f", "Zg=="},         {"fo", "Zm8="},
                                                           {"foo", "Zm9v"},  {"foob", "Zm9vYg=="},  {"fooba", "Zm9vYmE="},
                                                           {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, encoded] : vectors) {
        EXPECT_EQ(KVRDataCoding::base64Encoding(plain), encoded);
        EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(encoded), plain);
    }
    std::string bytes = allBytes();
    EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(KVRDataCoding::base64Encoding(bytes)), bytes);
}

TEST(KVRDataCoding, Base64LinesAndLenientWhiteSpace) {
    std::string bytes = allBytes();
    std::string lines = KVRDataCoding::base64EncodingWithLineLength(bytes, 64);
    size_t lineCount = 0;
    size_t start = 0;
    for (size_t end; (end = lines.find("\r\n", start)) != std::string::npos; start = end + 2, ++lineCount) {
        EXPECT_EQ(end - start, 64u);
    }
    EXPECT_EQ(lineCount, 5u);                 // 344 characters: five full lines and one of 24
    EXPECT_EQ(lines.size() - start, 24u);
    EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(lines), bytes);
    EXPECT_EQ(KVRDataCoding::base64EncodingWithLineLength(bytes, 0), KVRDataCoding::base64Encoding(bytes));
    EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(" Zm9v\nYmE "), "fooba");
    EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString("Zm9vYg"), "foob");  // padding left out
}

TEST(KVRDataCoding, Base64RejectsWhatNoEncoderProduces) {
    for (const char* bad : {"Zm9v!", "Z", "Zm9vY", "Zg=x", "Zg===", "=Zg", "Zm9v=", "Zm8==", "Zm-_"}) {
        EXPECT_EQ(KVRDataCoding::dataWithBase64EncodedString(bad), std::nullopt) << bad;
    }
}

TEST(KVRDataCoding, GzipRoundTripsAndWritesTheGzipWrapper) {
    std::mt19937 random(11);
    std::string noise(100000, '\0');
    for (auto& c : noise) c = static_cast<char>(random());
    const std::string inputs[] = {"x", std::string(200000, 'a'), noise, allBytes()};
    for (const auto& input : inputs) {
        auto packed = KVRDataCoding::gzipDeflate(input);
        ASSERT_TRUE(packed);
        EXPECT_TRUE(KVRDataCoding::isGzip(*packed));
        EXPECT_EQ(KVRDataCoding::gzipInflate(*packed), input);
    }
    EXPECT_EQ(KVRDataCoding::gzipDeflate(""), "");
    EXPECT_EQ(KVRDataCoding::gzipInflate(""), "");
}

TEST(KVRDataCoding, InflateDetectsTheZlibWrapperToo) {
    std::string input(5000, 'z');
    uLongf length = compressBound(input.size());
    std::string packed(length, '\0');
    ASSERT_EQ(compress(reinterpret_cast<Bytef*>(packed.data()), &length, reinterpret_cast<const Bytef*>(input.data()),
                       input.size()),
              Z_OK);
    packed.resize(length);
    EXPECT_FALSE(KVRDataCoding::isGzip(packed));
    EXPECT_EQ(KVRDataCoding::gzipInflate(packed), input);
}

TEST(KVRDataCoding, InflateRefusesTruncatedCorruptAndOversizedData) {
    std::mt19937 random(3);
    std::string input(100000, '\0');
    for (auto& c : input) c = static_cast<char>('a' + random() % 4);
    std::string packed = *KVRDataCoding::gzipDeflate(input);
    EXPECT_FALSE(KVRDataCoding::gzipInflate(packed.substr(0, packed.size() - 10)).has_value());
    EXPECT_FALSE(KVRDataCoding::gzipInflate("not compressed at all").has_value());
    std::string corrupt = packed;
    corrupt[corrupt.size() / 2] ^= 0x55;
    EXPECT_FALSE(KVRDataCoding::gzipInflate(corrupt).has_value());
    std::string badChecksum = packed;
    badChecksum[badChecksum.size() - 6] ^= 0x01;
    EXPECT_FALSE(KVRDataCoding::gzipInflate(badChecksum).has_value());
    EXPECT_FALSE(KVRDataCoding::gzipInflate(packed, 50000).has_value());
    EXPECT_TRUE(KVRDataCoding::gzipInflate(packed, 100000) == input);
}

}  // namespace
