#pragma once

#include <kovra/KVRCardProvider.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// Records every call of a card-number completion (success, digits, error,
/// calling thread) and lets a test wait for it without sleeping.
class KVRCardPanRecorder {
public:
    struct Call {
        bool success = false;
        std::optional<std::string> digits;
        std::optional<KVRError> error;
        std::thread::id thread;
    };

    /// A completion that records into this object (which must outlive it).
    KVRCardProvider::Completion block();
    bool waitForCalls(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(20)) const;
    std::vector<Call> calls() const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Call> calls_;
};
