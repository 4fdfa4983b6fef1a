#include "testing/KVRCompletionRecorder.h"

#include <kovra/KVRErrors.h>

#include <gtest/gtest.h>

#include <memory>

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

KVRCompletionRecorder::Call KVRCompletionRecorder::firstCall(const std::function<void(KVRCompletion)>& operation,
                                                             std::chrono::milliseconds timeout) {
    auto recorder = std::make_shared<KVRCompletionRecorder>();
    KVRCompletion block = recorder->block();
    operation([recorder, block](bool success, std::optional<KVRError> error) { block(success, std::move(error)); });
    if (!recorder->waitForCalls(1, timeout)) {
        ADD_FAILURE() << "no completion";
        return Call{false, KVRErrors::genericError(), {}};
    }
    return recorder->calls().front();
}
