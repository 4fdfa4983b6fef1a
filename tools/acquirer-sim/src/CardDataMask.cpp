#include "CardDataMask.h"

#include <algorithm>
#include <atomic>

namespace acqsim {

namespace {

std::atomic<bool> clearText{false};

constexpr std::string_view kWholeFields[] = {"TrckVal", "NcrptdData", "NcrptdKey", "DerivtnId", "CSCVal", "CrdhldrIdVal"};

std::string stars(std::string_view text) { return std::string(text.size(), '*'); }

} // namespace

void CardDataMask::setClearText(bool clear) { clearText = clear; }

std::string CardDataMask::value(std::string_view name, std::string_view text) {
    if (clearText) {
        return std::string(text);
    }
    if (name == "PAN") {
        if (text.size() <= 10) {
            return stars(text);
        }
        return std::string(text.substr(0, 6)) + stars(text.substr(6, text.size() - 10)) + std::string(text.substr(text.size() - 4));
    }
    if (std::find(std::begin(kWholeFields), std::end(kWholeFields), name) != std::end(kWholeFields)) {
        return stars(text);
    }
    return std::string(text);
}

} // namespace acqsim
