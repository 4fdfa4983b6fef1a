#pragma once

#include "KVRSimDelivery.h"
#include "KVRSimFaultRule.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What the emulated PIN pad does besides answering normally: which cards
/// are presented and which replies are replaced, delayed or damaged.
class KVRSimScenario {
public:
    /// What the rules matching one request ask for, merged in file order.
    struct Effect {
        std::optional<int> status;
        std::optional<int> decision;
        std::optional<std::string> card;
        KVRSimDelivery delivery;
    };

    KVRSimScenario() = default;
    /// Throws std::invalid_argument (bad content) or std::runtime_error (unreadable file).
    static KVRSimScenario fromFile(const std::filesystem::path& file);
    static KVRSimScenario fromJsonText(const std::string& text);

    void addRule(KVRSimFaultRule rule) { rules_.push_back(std::move(rule)); }
    const std::optional<std::string>& card() const { return card_; }

    /// Counts one valid request of `command` and merges the rules that apply to it.
    Effect match(const std::string& command);
    /// True when a "nak" rule refuses the next request of `command` (takes a use).
    bool refusesCopy(const std::string& command);
    /// The card for a successful card read: the next of "cards" (the last one
    /// repeats), or `fallback` when the scenario lists none.
    std::string nextCard(const std::string& fallback);

private:
    std::optional<std::string> card_;
    std::vector<std::string> cards_;
    size_t nextCardIndex_ = 0;
    std::vector<KVRSimFaultRule> rules_;
    std::map<std::string, int> occurrences_;
};
