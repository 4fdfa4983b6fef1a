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
    /// The lines that start with the prefix.
    std::vector<std::string> startingWith(const std::string& prefix) const;
    /// How many lines contain the text.
    size_t count(const std::string& text) const;
    bool contains(const std::string& text) const { return count(text) > 0; }
    void clear();
    /// All lines, one per line, for failure messages.
    std::string text() const;

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    decltype(KVRPlatformHooks::logSink) previous_;
};
