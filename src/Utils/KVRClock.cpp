#include "Utils/KVRClock.h"

#include "Utils/KVRPlatformHooks.h"

KVRClock::TimePoint KVRClock::now() {
    auto hooks = KVRPlatformHooks::installed();
    return hooks->now ? hooks->now() : std::chrono::system_clock::now();
}
