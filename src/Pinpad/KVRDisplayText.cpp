#include "Pinpad/KVRDisplayText.h"

#include "Utils/KVRStringUtil.h"

#include <cstdint>
#include <functional>

namespace {

// U+00C0 to U+00FF without their accents; "?" where no letter fits.
constexpr std::string_view kLatin1Letters = "AAAAAAACEEEEIIIIDNOOOOOxOUUUUY?saaaaaaaceeeeiiiidnooooo?ouuuuy?y";

char pinpadCharacter(uint32_t codePoint) {
    if (codePoint >= 0x20 && codePoint <= 0x7E) return static_cast<char>(codePoint);
    if (codePoint < 0x20 || codePoint == 0x7F || codePoint == 0xA0) return ' ';
    if (codePoint == 0xAA) return 'a';  // feminine ordinal, as in "1a"
    if (codePoint == 0xBA) return 'o';  // masculine ordinal, as in "no"
    if (codePoint >= 0xC0 && codePoint <= 0xFF) return kLatin1Letters[codePoint - 0xC0];
    return '?';
}

// Calls `each` with every character's code point; a malformed byte is passed
// as the impossible code point 0xFFFFFFFF and counts as one character.
void forEachCharacter(std::string_view text, const std::function<void(uint32_t)>& each) {
    size_t at = 0;
    while (at < text.size()) {
        uint32_t codePoint = 0;
        size_t length = KVRStringUtil::utf8SequenceLength(text, at, codePoint);
        if (length == 0) {
            each(0xFFFFFFFFu);
            ++at;
        } else {
            each(codePoint);
            at += length;
        }
    }
}

}  // namespace

size_t KVRDisplayText::characterCount(std::string_view text) {
    size_t count = 0;
    forEachCharacter(text, [&](uint32_t) { ++count; });
    return count;
}

std::string KVRDisplayText::pinpadCharacters(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    forEachCharacter(text, [&](uint32_t codePoint) { out.push_back(pinpadCharacter(codePoint)); });
    return out;
}

std::string KVRDisplayText::literalFromFormat(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        out.push_back(text[i]);
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
    }
    return out;
}
