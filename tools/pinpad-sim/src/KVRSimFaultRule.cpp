#include "KVRSimFaultRule.h"

#include "KVRSimCard.h"
#include "KVRSimLatin1.h"

#include <nlohmann/json.hpp>

#include <set>
#include <stdexcept>

namespace {

const std::set<std::string> kKeys{"command", "nth",   "times",          "status",    "decision", "card",
                                  "ntm",     "delay_ms", "split",       "split_delay_ms", "stray_syn", "bad_crc",
                                  "silence", "ack",   "hangup",         "nak"};

int boundedInt(const nlohmann::json& json, const char* key, int low, int high) {
    if (!json.at(key).is_number_integer()) {
        throw std::invalid_argument(std::string("\"") + key + "\" must be an integer");
    }
    int value = json.at(key).get<int>();
    if (value < low || value > high) {
        throw std::invalid_argument(std::string("\"") + key + "\" must be between " + std::to_string(low) + " and " +
                                    std::to_string(high));
    }
    return value;
}

bool boolean(const nlohmann::json& json, const char* key) {
    if (!json.at(key).is_boolean()) {
        throw std::invalid_argument(std::string("\"") + key + "\" must be true or false");
    }
    return json.at(key).get<bool>();
}

}  // namespace

KVRSimFaultRule KVRSimFaultRule::fromJson(const nlohmann::json& json) {
    if (!json.is_object()) {
        throw std::invalid_argument("a fault must be a JSON object");
    }
    for (const auto& item : json.items()) {
        if (!kKeys.count(item.key())) {
            throw std::invalid_argument("unknown fault key \"" + item.key() + "\"");
        }
    }
    KVRSimFaultRule rule;
    if (!json.contains("command") || !json.at("command").is_string() || json.at("command").get<std::string>().size() != 3) {
        throw std::invalid_argument("a fault needs \"command\", a three-letter command name");
    }
    rule.command = json.at("command").get<std::string>();
    if (json.contains("nth")) rule.nth = boundedInt(json, "nth", 1, 1000000);
    if (json.contains("times")) rule.times = boundedInt(json, "times", 1, 1000000);
    if (json.contains("status")) rule.status = boundedInt(json, "status", 0, 999);
    if (json.contains("decision")) rule.decision = boundedInt(json, "decision", 0, 9);
    if (json.contains("card")) {
        auto name = json.at("card").is_string() ? json.at("card").get<std::string>() : std::string();
        if (!KVRSimCard::named(name)) {
            throw std::invalid_argument("unknown card \"" + name + "\"");
        }
        rule.card = name;
    }
    if (json.contains("nak")) rule.nakCopy = boolean(json, "nak");
    readDelivery(json, rule.delivery);
    return rule;
}

KVRSimFaultRule KVRSimFaultRule::fromJsonText(const std::string& text) {
    auto json = nlohmann::json::parse(text, nullptr, false);
    if (json.is_discarded()) {
        throw std::invalid_argument("a fault is not JSON: " + text);
    }
    return fromJson(json);
}

void KVRSimFaultRule::readDelivery(const nlohmann::json& json, KVRSimDelivery& d) {
    if (json.contains("ntm")) {
        const auto& ntm = json.at("ntm");
        for (const auto& text : ntm.is_array() ? ntm : nlohmann::json::array({ntm})) {
            // Notifications travel in Latin-1, at most two display lines of 16.
            auto latin1 = text.is_string() ? KVRSimLatin1::fromUtf8(text.get<std::string>()) : std::string();
            if (!text.is_string() || latin1.size() > 32) {
                throw std::invalid_argument("\"ntm\" must be a text of at most 32 characters or a list of them");
            }
            d.notifications.push_back(latin1);
        }
    }
    if (json.contains("delay_ms")) d.delayMs = boundedInt(json, "delay_ms", 0, 600000);
    if (json.contains("split_delay_ms")) d.splitDelayMs = boundedInt(json, "split_delay_ms", 0, 600000);
    if (json.contains("split")) {
        const auto& split = json.at("split");
        d.repeatSplit = !split.is_array();
        for (const auto& size : split.is_array() ? split : nlohmann::json::array({split})) {
            if (!size.is_number_integer() || size.get<int>() < 1) {
                throw std::invalid_argument("\"split\" must be a positive size or a list of them");
            }
            d.split.push_back(size.get<size_t>());
        }
    }
    if (json.contains("stray_syn")) {
        const auto& stray = json.at("stray_syn");
        if (stray.is_boolean()) {
            if (stray.get<bool>()) d.straySynAfter = 3;
        } else {
            d.straySynAfter = static_cast<size_t>(boundedInt(json, "stray_syn", 0, 1023));
        }
    }
    if (json.contains("bad_crc")) d.wrongCrc = boolean(json, "bad_crc");
    if (json.contains("silence")) d.silence = boolean(json, "silence");
    if (json.contains("ack")) d.ackFirst = boolean(json, "ack");
    if (json.contains("hangup")) {
        const auto& hangup = json.at("hangup");
        if (hangup == true || hangup == "instead") {
            d.hangUp = KVRSimDelivery::HangUp::InsteadOfReply;
        } else if (hangup == "after") {
            d.hangUp = KVRSimDelivery::HangUp::AfterReply;
        } else if (hangup != false) {
            throw std::invalid_argument("\"hangup\" must be true, \"instead\" or \"after\"");
        }
    }
}

bool KVRSimFaultRule::take(const std::string& name, int occurrence) {
    if (name != command || (nth && *nth != occurrence) || (times && *times <= 0)) {
        return false;
    }
    if (times) {
        --*times;
    }
    return true;
}
