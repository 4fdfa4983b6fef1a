#pragma once

#include <chrono>
#include <ctime>

namespace kvrtest {

/// A moment given in the machine's local time, as the library formats dates.
inline std::chrono::system_clock::time_point localTime(int year, int month, int day, int hour = 0, int minute = 0,
                                                       int second = 0) {
    std::tm fields{};
    fields.tm_year = year - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    return std::chrono::system_clock::from_time_t(std::mktime(&fields));
}

}  // namespace kvrtest
