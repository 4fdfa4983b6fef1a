#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Walks a PIN pad reply left to right. Reads never pass the end of the reply
/// text: a field beyond it reads as empty text or 0, and a field cut by it
/// keeps only what is there.
class KVRCommandResponseReader {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    KVRCommandResponseReader() = default;
    /// Keeps its own copy of the text up to its first NUL; a null pointer reads as empty.
    explicit KVRCommandResponseReader(const char* response);
    explicit KVRCommandResponseReader(std::string_view response);

    /// The next `length` bytes (fewer at the end of the text; none for a negative length).
    std::string readString(int32_t length);
    /// The leading decimal value of the next `length` bytes; 0 when they hold no digits.
    int32_t readInt(int32_t length);
    /// One digit: true when it is 1.
    bool readBool();
    /// Six bytes as "yyMMdd".
    std::optional<TimePoint> readDate();
    /// Moves forward; a negative count does not move.
    void skip(int32_t length);

    int32_t position() const { return position_; }
    const std::string& response() const { return response_; }

private:
    std::string response_;
    int32_t position_ = 0;
};
