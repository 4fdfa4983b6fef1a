#include "Utils/KVRClock.h"

#include <mutex>

namespace {
std::mutex& clockMutex() {
    static std::mutex m;
    return m;
}
std::function<KVRClock::TimePoint()>& provider() {
    static auto* p = new std::function<KVRClock::TimePoint()>();
    return *p;
}
}  // namespace

KVRClock::TimePoint KVRClock::now() {
    std::function<TimePoint()> p;
    {
        std::lock_guard lock(clockMutex());
        p = provider();
    }
    return p ? p() : std::chrono::system_clock::now();
}

void KVRClock::setNowProvider(std::function<TimePoint()> p) {
    std::lock_guard lock(clockMutex());
    provider() = std::move(p);
}
