#include "StopSignal.h"

#include <chrono>

namespace acqsim {

void StopSignal::raise() {
    {
        std::lock_guard lock(mutex_);
        raised_ = true;
    }
    changed_.notify_all();
}

bool StopSignal::raised() const {
    std::lock_guard lock(mutex_);
    return raised_;
}

bool StopSignal::waitFor(double seconds) {
    std::unique_lock lock(mutex_);
    auto span = std::chrono::duration<double>(seconds);
    return !changed_.wait_for(lock, span, [this] { return raised_; });
}

} // namespace acqsim
