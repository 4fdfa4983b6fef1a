#include "SimTime.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace acqsim {
namespace {

std::string formatLocal(const char* pattern) {
    std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, pattern, &parts);
    return buffer;
}

} // namespace

std::string SimTime::localDateTime() {
    return formatLocal("%Y-%m-%dT%H:%M:%S");
}

std::string SimTime::localDateCompact() {
    return formatLocal("%y%m%d");
}

std::string SimTime::utcStamp() {
    auto now = std::chrono::system_clock::now();
    std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char buffer[40];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S", &parts);
    char out[48];
    std::snprintf(out, sizeof out, "%s.%03dZ", buffer, static_cast<int>(millis));
    return out;
}

} // namespace acqsim
