#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>

#include <cstdio>
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
void emit(const std::string& line) {
    KVRLoggingUtil::Sink current;
    {
        std::lock_guard lock(sinkMutex());
        current = sink();
    }
    if (current) {
        current(line);
        return;
    }
    std::fprintf(stderr, "%s\n", line.c_str());
}
}  // namespace

void KVRLoggingUtil::printLog(const std::string& text) {
    if (isDebugEnabled()) emit(text);
}

void KVRLoggingUtil::console(const std::string& text) { emit(text); }

void KVRLoggingUtil::setSink(Sink newSink) {
    std::lock_guard lock(sinkMutex());
    sink() = std::move(newSink);
}

bool KVRLoggingUtil::isDebugEnabled() { return KVRApplicationInfo::boolForKey("Kovra Debugginho Developer"); }

bool KVRLoggingUtil::logsCardData() { return KVRApplicationInfo::boolForKey("Kovra Log Card Data"); }
