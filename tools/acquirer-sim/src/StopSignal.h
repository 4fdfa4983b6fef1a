#pragma once

#include <condition_variable>
#include <mutex>

namespace acqsim {

// Raised once at shutdown; wakes every handler that holds back an answer, so
// a stop never waits for a deliberately delayed reply.
class StopSignal {
public:
    void raise();
    bool raised() const;
    // Waits up to `seconds`; false when the stop came first.
    bool waitFor(double seconds);

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    bool raised_ = false;
};

} // namespace acqsim
