#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Base64 (RFC 4648, standard alphabet) and gzip helpers over byte strings.
class KVRDataCoding {
public:
    KVRDataCoding() = delete;

    /// Decodes; line breaks and other white space are skipped, padding may be
    /// left out. Any other character outside the alphabet, or a length no
    /// encoder produces, gives nothing.
    static std::optional<std::string> dataWithBase64EncodedString(std::string_view text);
    static std::string base64Encoding(std::string_view bytes);
    /// Breaks the encoding into lines of `lineLength` characters separated by
    /// CR LF (no break after the last line); 0 means one line.
    static std::string base64EncodingWithLineLength(std::string_view bytes, size_t lineLength);

    /// gzip format (window bits 31), default level. An empty input stays empty.
    static std::optional<std::string> gzipDeflate(std::string_view bytes);
    /// Accepts a gzip or zlib wrapper (window bits 47). Truncated or corrupt
    /// data, or an output above `maximumLength`, gives nothing. An empty input
    /// stays empty.
    static std::optional<std::string> gzipInflate(std::string_view bytes, size_t maximumLength = 256u << 20);
    /// Whether the bytes start with the gzip magic number.
    static bool isGzip(std::string_view bytes);
};
