#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRSettingsKeys.h"
#include "Platform/KVRSystemLog.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {
std::mutex& sinkMutex() {
    static std::mutex m;
    return m;
}
KVRLoggingUtil::Sink& sink() {
    static auto* s = new KVRLoggingUtil::Sink();
    return *s;
}
// KOVRA_LOG=stderr puts every line on standard error, for a developer at a
// terminal; otherwise lines go to the system log, never onto the
// application's own standard error.
bool toStandardError() {
    const char* destination = std::getenv("KOVRA_LOG");
    return destination != nullptr && std::strcmp(destination, "stderr") == 0;
}

void emit(const std::string& line, bool debug) {
    KVRLoggingUtil::Sink current;
    {
        std::lock_guard lock(sinkMutex());
        current = sink();
    }
    if (current) {
        current(line);
    } else if (toStandardError()) {
        std::fprintf(stderr, "%s\n", line.c_str());
    } else if (debug) {
        KVRSystemLog::debug(line);
    } else {
        KVRSystemLog::info(line);
    }
}
}  // namespace

void KVRLoggingUtil::printLog(const std::string& text) {
    if (isDebugEnabled()) emit(text, true);
}

void KVRLoggingUtil::console(const std::string& text) { emit(text, false); }

void KVRLoggingUtil::setSink(Sink newSink) {
    std::lock_guard lock(sinkMutex());
    sink() = std::move(newSink);
}

bool KVRLoggingUtil::isDebugEnabled() { return KVRApplicationInfo::boolForKey(KVRSettingsKeys::kDebugLog); }

bool KVRLoggingUtil::logsCardData() { return KVRApplicationInfo::boolForKey(KVRSettingsKeys::kLogCardData); }
