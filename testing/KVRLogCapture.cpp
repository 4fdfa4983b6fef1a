#include "testing/KVRLogCapture.h"

#include "Utils/KVRPlatformHooks.h"

KVRLogCapture::KVRLogCapture() {
    KVRPlatformHooks::change([this](KVRPlatformHooks& hooks) {
        previous_ = hooks.logSink;
        hooks.logSink = [this](const std::string& line, bool) {
            std::lock_guard lock(mutex_);
            lines_.push_back(line);
        };
    });
}

// Only the sink is put back: hooks installed meanwhile stay.
KVRLogCapture::~KVRLogCapture() {
    KVRPlatformHooks::change([this](KVRPlatformHooks& hooks) { hooks.logSink = previous_; });
}

std::vector<std::string> KVRLogCapture::lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
}

bool KVRLogCapture::contains(const std::string& text) const {
    std::lock_guard lock(mutex_);
    for (const auto& line : lines_) {
        if (line.find(text) != std::string::npos) return true;
    }
    return false;
}

std::string KVRLogCapture::text() const {
    std::string all;
    for (const auto& line : lines()) all += line + "\n";
    return all;
}
