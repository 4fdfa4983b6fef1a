#pragma once

// Shared pieces of the host message tests: PIN pad replies laid out field by
// field (independently of the reply readers), a fixed clock and UUID source,
// and the expected documents kept under tests/data.

#include "Utils/KVRClock.h"
#include "Utils/KVRUUID.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include "testing/KVRLocalTime.h"
#include "testing/KVRTestFixture.h"

namespace kvrtest {

inline std::string pad(const std::string& text, size_t width) {
    std::string out = text.substr(0, width);
    out.resize(width, ' ');
    return out;
}

inline std::string num(long long value, int width) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%0*lld", width, value);
    return buffer;
}

inline std::string withHeader(const std::string& command, const std::string& body) {
    return command + "000" + num(static_cast<long long>(body.size()), 3) + body;
}

/// A card-read reply (GCR) without acquirer-specific data.
struct GcrReply {
    int cardType = 3;
    int appType = 1;
    std::string track1, track2, track3;
    std::string expiration = "271231";  // yyMMdd

    std::string text() const {
        std::string body = num(cardType, 2) + "0" + num(appType, 2) + "08" + "02";
        body += num(static_cast<long long>(track1.size()), 2) + pad(track1, 76);
        body += num(static_cast<long long>(track2.size()), 2) + pad(track2, 37);
        body += num(static_cast<long long>(track3.size()), 3) + pad(track3, 104);
        body += "00" + pad("", 19) + "00" + pad("CREDITO", 16) + "201" + pad("CLIENTE TESTE", 26) + expiration +
                std::string(29, '0') + "076" + "000";
        return withHeader("GCR", body);
    }
};

/// A chip-processing reply (GOC) asking to go on line.
inline std::string gocReply(const std::string& pinBlock, const std::string& keySerialNumber, const std::string& emv) {
    std::string body = std::string("2") + "0" + "0" + "0" + "0" + "1" + pad(pinBlock, 16) + pad(keySerialNumber, 20) +
                       num(static_cast<long long>(emv.size() / 2), 3) + emv + "000";
    return withHeader("GOC", body);
}

/// A PIN entry reply (GPN).
inline std::string gpnReply(const std::string& pinBlock, const std::string& keySerialNumber) {
    return withHeader("GPN", pad(pinBlock, 16) + pad(keySerialNumber, 20));
}

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

/// A file of tests/data, byte for byte.
inline std::string testData(const std::string& name) {
    std::ifstream in(std::string(KOVRA_TEST_DATA_DIR) + "/" + name, std::ios::binary);
    if (!in) throw std::runtime_error("missing test data " + name);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

}  // namespace kvrtest
