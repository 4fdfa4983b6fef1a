#include "KVRSimScenario.h"

#include "KVRSimCard.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

std::string checkedCardName(const nlohmann::json& value) {
    std::string name = value.is_string() ? value.get<std::string>() : std::string();
    if (!KVRSimCard::named(name)) {
        throw std::invalid_argument("unknown card \"" + name + "\"");
    }
    return name;
}

}  // namespace

KVRSimScenario KVRSimScenario::fromFile(const std::filesystem::path& file) {
    std::ifstream in(file);
    if (!in) {
        throw std::runtime_error("cannot read scenario " + file.string());
    }
    std::stringstream text;
    text << in.rdbuf();
    return fromJsonText(text.str());
}

KVRSimScenario KVRSimScenario::fromJsonText(const std::string& text) {
    auto json = nlohmann::json::parse(text, nullptr, false);
    if (json.is_discarded() || !json.is_object()) {
        throw std::invalid_argument("a scenario must be a JSON object");
    }
    KVRSimScenario scenario;
    for (const auto& item : json.items()) {
        const auto& key = item.key();
        const auto& value = item.value();
        if (key == "card") {
            scenario.card_ = checkedCardName(value);
        } else if (key == "cards") {
            if (!value.is_array() || value.empty()) {
                throw std::invalid_argument("\"cards\" must be a non-empty list of card names");
            }
            for (const auto& name : value) {
                scenario.cards_.push_back(checkedCardName(name));
            }
        } else if (key == "faults") {
            if (!value.is_array()) {
                throw std::invalid_argument("\"faults\" must be a list");
            }
            for (const auto& rule : value) {
                scenario.rules_.push_back(KVRSimFaultRule::fromJson(rule));
            }
        } else {
            throw std::invalid_argument("unknown scenario key \"" + key + "\"");
        }
    }
    return scenario;
}

KVRSimScenario::Effect KVRSimScenario::match(const std::string& command) {
    int occurrence = ++occurrences_[command];
    Effect effect;
    for (auto& rule : rules_) {
        if (rule.nakCopy || !rule.take(command, occurrence)) {
            continue;
        }
        if (rule.status) effect.status = rule.status;
        if (rule.decision) effect.decision = rule.decision;
        if (rule.card) effect.card = rule.card;
        effect.delivery.merge(rule.delivery);
    }
    return effect;
}

bool KVRSimScenario::refusesCopy(const std::string& command) {
    // The refused copy is not a request the PIN pad took, so it is not counted.
    int occurrence = occurrences_[command] + 1;
    for (auto& rule : rules_) {
        if (rule.nakCopy && rule.take(command, occurrence)) {
            return true;
        }
    }
    return false;
}

std::string KVRSimScenario::nextCard(const std::string& fallback) {
    if (cards_.empty()) {
        return fallback;
    }
    const auto& card = cards_[std::min(nextCardIndex_, cards_.size() - 1)];
    ++nextCardIndex_;
    return card;
}
