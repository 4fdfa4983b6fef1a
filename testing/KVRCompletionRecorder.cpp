#include "testing/KVRCompletionRecorder.h"

KVRCompletion KVRCompletionRecorder::block() {
    return [this](bool success, std::optional<KVRError> error) {
        std::lock_guard lock(mutex_);
        calls_.push_back({success, std::move(error), std::this_thread::get_id()});
        changed_.notify_all();
    };
}

bool KVRCompletionRecorder::waitForCalls(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return calls_.size() >= count; });
}

std::vector<KVRCompletionRecorder::Call> KVRCompletionRecorder::calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
}

size_t KVRCompletionRecorder::count() const {
    std::lock_guard lock(mutex_);
    return calls_.size();
}
