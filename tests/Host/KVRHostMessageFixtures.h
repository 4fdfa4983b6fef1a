#pragma once

// Shared pieces of the host message tests: a fixed clock and UUID source, and
// the expected documents kept under tests/data.

#include "Utils/KVRClock.h"
#include "Utils/KVRUUID.h"

#include <chrono>
#include <ctime>
#include <string>
#include "testing/KVRLocalTime.h"
#include "testing/KVRTestFixture.h"
#include "testing/KVRFiles.h"

namespace kvrtest {

/// Now is 17 May 2024, 14:32:05 local time, and every UUID is the same one,
/// written in lower case as some sources give it. The test's end restores
/// the machine's.
class FixedClockAndUuid {
public:
    static constexpr const char* uuid = "1b4e28ba-2fa1-11d2-883f-0016d3cca427";

    FixedClockAndUuid() {
        auto now = localTime(2024, 5, 17, 14, 32, 5);
        KVRTestFixture::setClock([now] { return now; });
        KVRTestFixture::setUuidGenerator([] { return std::string(uuid); });
    }
    FixedClockAndUuid(const FixedClockAndUuid&) = delete;
    FixedClockAndUuid& operator=(const FixedClockAndUuid&) = delete;
};

}  // namespace kvrtest
