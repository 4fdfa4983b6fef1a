#include "KVRSimResponder.h"

#include "KVRSimFrame.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace {

const std::string kAck(1, KVRSimFrame::kAck);
const std::string kNak(1, KVRSimFrame::kNak);

}  // namespace

KVRSimResponder::Next KVRSimResponder::deliver(const KVRSimOutcome& outcome) {
    if (outcome.refused) {
        transport_.send(kNak);
        return Next::Serve;
    }
    const auto& how = outcome.delivery;
    if (how.silence || how.hangUp == KVRSimDelivery::HangUp::InsteadOfReply) {
        if (how.ackFirst) {
            transport_.send(kAck);
        }
        return how.silence ? Next::Serve : Next::HangUp;
    }
    transport_.send(kAck);
    pause(how.delayMs);
    for (const auto& text : how.notifications) {
        transport_.send(KVRSimFrame::encode(notification(text)) + kAck);
    }
    auto frame = KVRSimFrame::encode(outcome.reply, KVRSimFrame::Damage{how.straySynAfter, how.wrongCrc});
    auto parts = pieces(frame, how);
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            pause(how.splitDelayMs);
        }
        transport_.send(parts[i]);
    }
    return how.hangUp == KVRSimDelivery::HangUp::AfterReply ? Next::HangUp : Next::Serve;
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

void KVRSimResponder::pause(int milliseconds) {
    if (milliseconds > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    }
}
