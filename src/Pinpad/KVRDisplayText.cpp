#include "Pinpad/KVRDisplayText.h"

#include "Utils/KVRStringUtil.h"

#include <cstdint>
#include <functional>

namespace {

// PIN pad displays take bytes 0x20 to 0xFF as ISO-8859-1: printable ASCII
// and the Latin-1 letters go as they are, controls become spaces and
// anything the display cannot show becomes "?".
char pinpadCharacter(uint32_t codePoint) {
    if (codePoint >= 0x20 && codePoint <= 0x7E) return static_cast<char>(codePoint);
    if (codePoint < 0x20 || codePoint == 0x7F) return ' ';
    if (codePoint >= 0xA0 && codePoint <= 0xFF) return static_cast<char>(static_cast<uint8_t>(codePoint));
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

std::string KVRDisplayText::utf8FromLatin1(std::string_view text) {
    std::string out;
    out.reserve(text.size() * 2);
    for (char c : text) {
        auto byte = static_cast<uint8_t>(c);
        if (byte < 0x80) {
            out.push_back(c);
        } else {
            out.push_back(static_cast<char>(0xC0 | (byte >> 6)));
            out.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
        }
    }
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
