#include "Host/KVRDataCoding.h"

#include <zlib.h>

#include <array>
#include <climits>
#include <cstring>

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr size_t kChunk = 16384;

constexpr std::array<int8_t, 256> decodingTable() {
    std::array<int8_t, 256> table{};
    for (auto& v : table) v = -1;
    for (int i = 0; i < 64; ++i) table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<int8_t>(i);
    return table;
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

std::optional<std::string> KVRDataCoding::dataWithBase64EncodedString(std::string_view text) {
    static constexpr auto table = decodingTable();
    std::string out;
    out.reserve(text.size() / 4 * 3 + 3);
    uint32_t accumulator = 0;
    int bits = 0;
    size_t symbols = 0;
    size_t padding = 0;
    for (char c : text) {
        if (isSpace(c)) continue;
        if (c == '=') {
            ++padding;
            continue;
        }
        int8_t value = table[static_cast<unsigned char>(c)];
        if (value < 0 || padding > 0) return std::nullopt;  // foreign character, or data after padding
        ++symbols;
        accumulator = (accumulator << 6) | static_cast<uint32_t>(value);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out.push_back(static_cast<char>((accumulator >> bits) & 0xFF));
        }
    }
    size_t lastGroup = symbols % 4;
    if (lastGroup == 1) return std::nullopt;
    if (padding > 0 && (lastGroup == 0 || lastGroup + padding != 4)) return std::nullopt;
    return out;
}

std::string KVRDataCoding::base64Encoding(std::string_view bytes) { return base64EncodingWithLineLength(bytes, 0); }

std::string KVRDataCoding::base64EncodingWithLineLength(std::string_view bytes, size_t lineLength) {
    std::string encoded;
    encoded.reserve((bytes.size() + 2) / 3 * 4);
    auto byteAt = [&](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])); };
    for (size_t i = 0; i < bytes.size(); i += 3) {
        size_t left = bytes.size() - i;
        uint32_t group = byteAt(i) << 16 | (left > 1 ? byteAt(i + 1) << 8 : 0) | (left > 2 ? byteAt(i + 2) : 0);
        encoded.push_back(kAlphabet[(group >> 18) & 0x3F]);
        encoded.push_back(kAlphabet[(group >> 12) & 0x3F]);
        encoded.push_back(left > 1 ? kAlphabet[(group >> 6) & 0x3F] : '=');
        encoded.push_back(left > 2 ? kAlphabet[group & 0x3F] : '=');
    }
    if (lineLength == 0 || encoded.size() <= lineLength) return encoded;
    std::string lines;
    lines.reserve(encoded.size() + encoded.size() / lineLength * 2);
    for (size_t at = 0; at < encoded.size(); at += lineLength) {
        if (at > 0) lines += "\r\n";
        lines.append(encoded, at, lineLength);
    }
    return lines;
}

std::optional<std::string> KVRDataCoding::gzipDeflate(std::string_view bytes) {
    if (bytes.empty()) return std::string();
    if (bytes.size() > UINT_MAX) return std::nullopt;  // one zlib call takes at most 4 GiB
    z_stream stream;
    std::memset(&stream, 0, sizeof(stream));
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY) != Z_OK) return std::nullopt;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    std::string out;
    int status = Z_OK;
    while (status == Z_OK) {
        size_t produced = out.size();
        out.resize(produced + kChunk);
        stream.next_out = reinterpret_cast<Bytef*>(out.data() + produced);
        stream.avail_out = static_cast<uInt>(kChunk);
        status = deflate(&stream, Z_FINISH);
        out.resize(produced + kChunk - stream.avail_out);
    }
    deflateEnd(&stream);
    if (status != Z_STREAM_END) return std::nullopt;
    return out;
}

std::optional<std::string> KVRDataCoding::gzipInflate(std::string_view bytes, size_t maximumLength) {
    if (bytes.empty()) return std::string();
    if (bytes.size() > UINT_MAX) return std::nullopt;
    z_stream stream;
    std::memset(&stream, 0, sizeof(stream));
    if (inflateInit2(&stream, 47) != Z_OK) return std::nullopt;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    std::string out;
    int status = Z_OK;
    while (status == Z_OK) {
        size_t produced = out.size();
        if (produced > maximumLength) break;
        out.resize(produced + kChunk);
        stream.next_out = reinterpret_cast<Bytef*>(out.data() + produced);
        stream.avail_out = static_cast<uInt>(kChunk);
        status = inflate(&stream, Z_SYNC_FLUSH);
        out.resize(produced + kChunk - stream.avail_out);
        // Input used up without the end of the stream: truncated.
        if (status == Z_OK && stream.avail_in == 0 && stream.avail_out != 0) status = Z_BUF_ERROR;
    }
    inflateEnd(&stream);
    if (status != Z_STREAM_END || out.size() > maximumLength) return std::nullopt;
    return out;
}

bool KVRDataCoding::isGzip(std::string_view bytes) {
    return bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0x1F && static_cast<unsigned char>(bytes[1]) == 0x8B;
}
