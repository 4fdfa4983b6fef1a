#pragma once

#include "KVRSimDelivery.h"

#include <string>

/// What the emulated PIN pad does about one request frame: refuse it with a
/// NAK (and say why), or acknowledge it and answer with a response text.
struct KVRSimOutcome {
    bool refused = false;
    std::string reason;
    std::string reply;
    KVRSimDelivery delivery;
    /// The request as the command log may show it.
    std::string logged;

    static KVRSimOutcome refuse(std::string why) { return KVRSimOutcome{true, std::move(why), {}, {}, {}}; }
    static KVRSimOutcome answer(std::string text, KVRSimDelivery how = {}) {
        return KVRSimOutcome{false, {}, std::move(text), std::move(how), {}};
    }
};
