#pragma once

#include <kovra/KVRCompletion.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

/// Records every call of a completion (success, error, calling thread) and
/// lets a test wait for a number of calls without sleeping.
class KVRCompletionRecorder {
public:
    struct Call {
        bool success = false;
        std::optional<KVRError> error;
        std::thread::id thread;
    };

    /// A completion that records into this object (which must outlive it).
    KVRCompletion block();
    /// Waits until at least `count` calls arrived; false after the time-out.
    bool waitForCalls(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(20)) const;
    std::vector<Call> calls() const;
    size_t count() const;

    /// Starts an operation with a recorded completion and waits for its first
    /// call; a failure with genericError (and a test failure) when none comes.
    /// A completion arriving after the wait still has somewhere to go.
    static Call firstCall(const std::function<void(KVRCompletion)>& operation,
                          std::chrono::milliseconds timeout = std::chrono::seconds(20));

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Call> calls_;
};
