#include "testing/KVRCardPanRecorder.h"

KVRCardProvider::Completion KVRCardPanRecorder::block() {
    return [this](bool success, std::optional<std::string> digits, std::optional<KVRError> error) {
        // Notified under the lock: the test may return from waitForCalls and
        // destroy this recorder as soon as it sees the call.
        std::lock_guard lock(mutex_);
        calls_.push_back({success, std::move(digits), std::move(error), std::this_thread::get_id()});
        changed_.notify_all();
    };
}

bool KVRCardPanRecorder::waitForCalls(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return calls_.size() >= count; });
}

std::vector<KVRCardPanRecorder::Call> KVRCardPanRecorder::calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
}
