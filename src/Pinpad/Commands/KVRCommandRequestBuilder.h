#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Size of the buffer a request is printed into: 1023 text bytes and a NUL.
inline constexpr size_t KVRCommandBufferSize = 1024;

/// Writes an ABECS command text field by field into a caller's buffer. Every
/// writer checks the field's width and the buffer's end before it writes, so a
/// failing field leaves the text as it was; the text is always NUL-terminated.
class KVRCommandRequestBuilder {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    explicit KVRCommandRequestBuilder(char* request, size_t capacity = KVRCommandBufferSize);

    /// The text must be exactly `length` bytes.
    void appendString(std::string_view text, int length);
    /// Left-aligned, padded on the right up to `length`.
    void appendStringRight(std::string_view text, int length, char padding);
    /// Right-aligned, padded on the left up to `length`.
    void appendStringLeft(std::string_view text, int length, char padding);
    void appendInt(int32_t value, int length);
    void appendLong(int64_t value, int length);
    void appendBool(bool value);
    void appendNSDate(TimePoint date, const std::string& format, int length);
    /// "yyMMdd".
    void appendDate(TimePoint date);
    /// "hhmmss": the 12-hour clock, as the PIN pads in the field expect it.
    void appendTime(TimePoint date);

    /// Opens a length-prefixed block ("000" until it is closed).
    void startCommandBlock();
    void stopCommandBlock();
    /// Closes the innermost block; its length is the bytes written after the
    /// three length digits, plus `extra`.
    void stopCommandBlock(int32_t extra);

    int32_t position() const { return position_; }
    const char* request() const { return request_; }

private:
    void ensureRoom(size_t bytes) const;
    void write(std::string_view bytes);
    void writePadding(char padding, size_t count);

    char* request_;
    size_t capacity_;
    int32_t position_ = 0;
    std::vector<int32_t> blockstarts_;
};
