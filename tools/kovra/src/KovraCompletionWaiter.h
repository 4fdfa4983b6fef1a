#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRError.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <variant>

/// Turns a provider's completion, which arrives on one of the library's
/// threads, into a blocking wait. Only the first call counts: enrolment calls
/// its completion a second time after a transport failure, and that second
/// call may come after the tool has moved on, so the shared state outlives
/// the waiter. The wait has no time limit of its own; Ctrl-C ends the tool.
template <class Payload = std::monostate>
class KovraCompletionWaiter {
public:
    struct Result {
        bool success = false;
        Payload payload{};
        std::optional<KVRError> error;
    };

    /// Delivers a result; ignored after the first.
    void deliver(Result result) const { deliverTo(state_, std::move(result)); }

    /// A completion for the providers that report only success and error.
    KVRCompletion completion() const {
        return [state = state_](bool success, std::optional<KVRError> error) {
            deliverTo(state, Result{success, Payload{}, std::move(error)});
        };
    }

    /// A completion for providers that also hand back a value.
    template <class Value>
    auto completionWithPayload() const {
        return [state = state_](bool success, Value value, std::optional<KVRError> error) {
            deliverTo(state, Result{success, Payload(std::move(value)), std::move(error)});
        };
    }

    Result wait() const {
        std::unique_lock lock(state_->mutex);
        state_->ready.wait(lock, [this] { return state_->result.has_value(); });
        return *state_->result;
    }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable ready;
        std::optional<Result> result;
    };

    static void deliverTo(const std::shared_ptr<State>& state, Result result) {
        {
            std::lock_guard lock(state->mutex);
            if (state->result) return;
            state->result = std::move(result);
        }
        state->ready.notify_all();
    }

    std::shared_ptr<State> state_ = std::make_shared<State>();
};
