#pragma once

#include "KVRSimDelivery.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

/// One entry of a scenario's "faults": what to do to the replies of one command.
class KVRSimFaultRule {
public:
    /// Throws std::invalid_argument naming the offending key.
    static KVRSimFaultRule fromJson(const nlohmann::json& json);
    static KVRSimFaultRule fromJsonText(const std::string& text);

    /// True when the rule applies to the `occurrence`-th valid request of
    /// `command` (counted from 1) and has uses left; takes one use.
    bool take(const std::string& command, int occurrence);

    std::string command;
    std::optional<int> nth;
    std::optional<int> times;
    std::optional<int> status;
    std::optional<int> decision;
    std::optional<std::string> card;
    /// Refuse the request with NAK as if it arrived damaged; the copy the host
    /// sends again is answered.
    bool nakCopy = false;
    KVRSimDelivery delivery;

private:
    static void readDelivery(const nlohmann::json& json, KVRSimDelivery& delivery);
};
