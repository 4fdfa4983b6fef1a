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

std::vector<std::string> KVRLogCapture::startingWith(const std::string& prefix) const {
    std::vector<std::string> found;
    for (const auto& line : lines())
        if (line.rfind(prefix, 0) == 0) found.push_back(line);
    return found;
}

size_t KVRLogCapture::count(const std::string& text) const {
    std::lock_guard lock(mutex_);
    size_t found = 0;
    for (const auto& line : lines_) found += line.find(text) != std::string::npos;
    return found;
}

void KVRLogCapture::clear() {
    std::lock_guard lock(mutex_);
    lines_.clear();
}

std::string KVRLogCapture::text() const {
    std::string all;
    for (const auto& line : lines()) all += line + "\n";
    return all;
}
