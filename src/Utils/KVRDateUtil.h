#pragma once

#include <chrono>
#include <optional>
#include <string>

/// Date formatting and parsing with date-format patterns, in the machine's
/// local time zone. Supported fields: y (yy, yyyy), M, d, H, h (12-hour clock),
/// m, s, a; quoted literals ('T', '-', '' for an apostrophe) and punctuation.
class KVRDateUtil {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    KVRDateUtil() = delete;

    static std::string dateStringWithFormat(const std::string& format, TimePoint date);
    /// The whole text must match the pattern. Two-digit years fall in the
    /// window from 80 years before to 20 years after now. Unparsable text
    /// gives nothing, never an exception.
    static std::optional<TimePoint> buildDateWithString(const std::string& text, const std::string& format);
};
