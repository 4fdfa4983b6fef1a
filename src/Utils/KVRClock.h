#pragma once

#include <chrono>

/// The library's notion of "now": the installed platform hooks' clock, else
/// the system clock.
class KVRClock {
public:
    using TimePoint = std::chrono::system_clock::time_point;
    KVRClock() = delete;
    static TimePoint now();
};
