#include "KVRSimResponder.h"

#include "KVRSimFrame.h"

#include <cstdio>

namespace {

const std::string kAck(1, KVRSimFrame::kAck);
const std::string kNak(1, KVRSimFrame::kNak);
const std::string kEot(1, KVRSimFrame::kEot);

}  // namespace

void KVRSimResponder::deliver(const KVRSimOutcome& outcome) {
    if (outcome.refused) {
        add({0, kNak, {}, false});
        return;
    }
    const auto& how = outcome.delivery;
    if (how.silence || how.hangUp == KVRSimDelivery::HangUp::InsteadOfReply) {
        if (how.ackFirst) {
            add({0, kAck, {}, false});
        }
        if (!how.silence) {
            add({0, {}, {}, true});
        }
        return;
    }
    // A real PIN pad acknowledges the command once; the notifications and the
    // response then follow with nothing in between.
    add({0, kAck, {}, false});
    int delay = how.delayMs;
    for (const auto& text : how.notifications) {
        auto frame = KVRSimFrame::encode(notification(text));
        add({delay, frame, frame, false});
        delay = 0;
    }
    auto clean = KVRSimFrame::encode(outcome.reply);
    auto frame = KVRSimFrame::encode(outcome.reply, KVRSimFrame::Damage{how.straySynAfter, how.wrongCrc});
    auto parts = pieces(frame, how);
    for (size_t i = 0; i < parts.size(); ++i) {
        bool last = i + 1 == parts.size();
        add({i == 0 ? delay : how.splitDelayMs, parts[i], last ? clean : std::string(), false});
    }
    if (how.hangUp == KVRSimDelivery::HangUp::AfterReply) {
        add({0, {}, {}, true});
    }
}

void KVRSimResponder::add(Step step) {
    if (plan_.empty()) {
        headDue_ = Clock::now() + std::chrono::milliseconds(step.delayMs);
    }
    plan_.push_back(std::move(step));
}

bool KVRSimResponder::sendDue() {
    while (!plan_.empty() && Clock::now() >= headDue_) {
        auto step = std::move(plan_.front());
        plan_.pop_front();
        if (step.hangUp) {
            forget();
            return true;
        }
        transport_.send(step.bytes);
        if (step.bytes == kAck) {
            lastFrame_.clear();  // a new command: the previous response is no longer asked for
        }
        if (!step.resendAs.empty()) {
            lastFrame_ = step.resendAs;
        }
        if (!plan_.empty()) {
            headDue_ = Clock::now() + std::chrono::milliseconds(plan_.front().delayMs);
        }
    }
    return false;
}

int KVRSimResponder::msUntilNextStep() const {
    if (plan_.empty()) {
        return -1;
    }
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(headDue_ - Clock::now()).count();
    return left > 0 ? static_cast<int>(left) + 1 : 0;
}

void KVRSimResponder::abandon() {
    plan_.clear();
    lastFrame_.clear();
    transport_.send(kEot);
}

void KVRSimResponder::resendLast() {
    if (!lastFrame_.empty()) {
        add({0, lastFrame_, lastFrame_, false});
    }
}

void KVRSimResponder::forget() {
    plan_.clear();
    lastFrame_.clear();
}

std::vector<std::string> KVRSimResponder::pieces(const std::string& frame, const KVRSimDelivery& delivery) {
    std::vector<std::string> parts;
    size_t position = 0;
    size_t index = 0;
    while (position < frame.size() && index < delivery.split.size()) {
        size_t size = delivery.split[index];
        parts.push_back(frame.substr(position, size));
        position += size;
        if (!delivery.repeatSplit) {
            ++index;
        }
    }
    if (position < frame.size()) {
        parts.push_back(frame.substr(position));
    }
    return parts;
}

std::string KVRSimResponder::notification(const std::string& text) {
    char length[8];
    std::snprintf(length, sizeof length, "%03zu", text.size());
    return "NTM000" + std::string(length) + text;
}
