#pragma once

#include <chrono>
#include <functional>

/// The library's notion of "now". Tests may fix it to get reproducible
/// documents and keys.
class KVRClock {
public:
    using TimePoint = std::chrono::system_clock::time_point;
    KVRClock() = delete;
    static TimePoint now();
    /// An empty function restores the system clock.
    static void setNowProvider(std::function<TimePoint()> provider);
};
