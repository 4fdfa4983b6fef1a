#include "testing/KVRLogCapture.h"

#include <kovra/KVRLoggingUtil.h>

KVRLogCapture::KVRLogCapture() {
    KVRLoggingUtil::setSink([this](const std::string& line) {
        std::lock_guard lock(mutex_);
        lines_.push_back(line);
    });
}

KVRLogCapture::~KVRLogCapture() { KVRLoggingUtil::setSink({}); }

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
