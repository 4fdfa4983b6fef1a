#include "Utils/KVRBerTlv.h"

#include "Utils/KVRStringUtil.h"

#include <optional>

namespace {

// The byte whose two hexadecimal digits stand at `at`, or nothing when the
// text ends first or holds something else there.
std::optional<unsigned> hexByte(const std::string& text, size_t at) {
    if (at + 2 > text.size()) return std::nullopt;
    unsigned value = 0;
    for (size_t i = at; i < at + 2; ++i) {
        char c = text[i];
        unsigned digit;
        if (c >= '0' && c <= '9') {
            digit = c - '0';
        } else if (c >= 'A' && c <= 'F') {
            digit = c - 'A' + 10;
        } else if (c >= 'a' && c <= 'f') {
            digit = c - 'a' + 10;
        } else {
            return std::nullopt;
        }
        value = value * 16 + digit;
    }
    return value;
}

}  // namespace

std::map<std::string, std::string> KVRBerTlv::read(const std::string& text) {
    std::map<std::string, std::string> elements;
    size_t at = 0;
    while (at < text.size()) {
        auto first = hexByte(text, at);
        if (!first) break;
        size_t tagLength = (*first & 0x1F) == 0x1F ? 4 : 2;
        if (tagLength == 4 && !hexByte(text, at + 2)) break;
        std::string tag = KVRStringUtil::toUpper(text.substr(at, tagLength));
        at += tagLength;
        auto length = hexByte(text, at);
        if (!length) break;
        at += 2;
        if (*length > 0x7F) {
            length = hexByte(text, at);
            if (!length) break;
            at += 2;
        }
        size_t valueLength = static_cast<size_t>(*length) * 2;
        if (text.size() - at < valueLength) break;
        bool hex = true;
        for (size_t i = 0; i < valueLength && hex; i += 2) hex = hexByte(text, at + i).has_value();
        if (!hex) break;
        elements[tag] = KVRStringUtil::toUpper(text.substr(at, valueLength));
        at += valueLength;
    }
    return elements;
}
