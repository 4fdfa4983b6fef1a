#pragma once

#include "Utils/KVRPlatformHooks.h"

#include <mutex>
#include <string>
#include <vector>

/// Collects every log line (debug and console) for the life of the object,
/// instead of printing them.
class KVRLogCapture {
public:
    KVRLogCapture();
    ~KVRLogCapture();
    KVRLogCapture(const KVRLogCapture&) = delete;
    KVRLogCapture& operator=(const KVRLogCapture&) = delete;

    std::vector<std::string> lines() const;
    /// Whether some line contains the text.
    bool contains(const std::string& text) const;
    /// All lines, one per line, for failure messages.
    std::string text() const;

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    decltype(KVRPlatformHooks::logSink) previous_;
};
