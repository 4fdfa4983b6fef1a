#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRSettingsKeys.h"
#include "Platform/KVRSystemLog.h"
#include "Utils/KVRPlatformHooks.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
// KOVRA_LOG=stderr puts every line on standard error, for a developer at a
// terminal; otherwise lines go to the system log, never onto the
// application's own standard error.
bool toStandardError() {
    const char* destination = std::getenv("KOVRA_LOG");
    return destination != nullptr && std::strcmp(destination, "stderr") == 0;
}

void emit(const std::string& line, bool debug) {
    auto hooks = KVRPlatformHooks::installed();
    if (hooks->logSink) {
        hooks->logSink(line, debug);
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

// The application's sink is the platform hooks' log sink; it gets every line
// alike. Setting it keeps the other hooks in force.
void KVRLoggingUtil::setSink(Sink newSink) {
    KVRPlatformHooks::change([&](KVRPlatformHooks& hooks) {
        hooks.logSink = nullptr;
        if (newSink) hooks.logSink = [newSink = std::move(newSink)](const std::string& line, bool) { newSink(line); };
    });
}

bool KVRLoggingUtil::isDebugEnabled() { return KVRApplicationInfo::boolForKey(KVRSettingsKeys::kDebugLog); }

bool KVRLoggingUtil::logsCardData() { return KVRApplicationInfo::boolForKey(KVRSettingsKeys::kLogCardData); }
