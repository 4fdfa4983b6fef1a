#include "Pinpad/KVRCardDataMasker.h"

#include "Utils/KVRStringUtil.h"

#include <algorithm>
#include <cctype>

namespace {

constexpr size_t kShortestPan = 12;
constexpr size_t kVisibleDigits = 4;

bool isDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

enum class Mask { Track, Secret };

struct Field {
    size_t offset;
    size_t width;
    Mask mask;
};

// Offsets in the reply texts: name (3), return code (3), block length (3), then the fields.
const Field kGcrReplyFields[] = {
    {20, 76, Mask::Track},    // first track
    {98, 37, Mask::Track},    // second track
    {138, 104, Mask::Track},  // third track
    {244, 19, Mask::Track},   // PAN
    {284, 26, Mask::Secret},  // cardholder name
};
const Field kGocReplyFields[] = {{15, 16, Mask::Secret}, {31, 20, Mask::Secret}};
const Field kGpnReplyFields[] = {{9, 16, Mask::Secret}, {25, 20, Mask::Secret}};

// Commands whose texts carry no card data.
const char* const kPlainCommands[] = {"OPN", "CLO", "GIN", "DSP", "RMC", "PRT", "TLI", "TLR", "TLE", "GOC", "FNC"};

std::string secret(const std::string& value) {
    std::string out = value;
    std::replace_if(out.begin(), out.end(), [](char c) { return c != ' '; }, '*');
    return out;
}

void maskField(std::string& text, const Field& field) {
    if (field.offset >= text.size()) return;
    size_t width = std::min(field.width, text.size() - field.offset);
    std::string value = text.substr(field.offset, width);
    text.replace(field.offset, width,
                 field.mask == Mask::Track ? KVRCardDataMasker::maskTrack(value) : secret(value));
}

template <size_t N>
std::string maskFields(std::string text, const Field (&fields)[N]) {
    for (const Field& field : fields) maskField(text, field);
    return text;
}

bool isPlain(const std::string& name) {
    return std::any_of(std::begin(kPlainCommands), std::end(kPlainCommands), [&](const char* c) { return name == c; });
}

}  // namespace

std::string KVRCardDataMasker::maskTrack(const std::string& value) {
    size_t start = 0;
    while (start < value.size() && !isDigit(value[start])) ++start;
    size_t end = start;
    while (end < value.size() && isDigit(value[end])) ++end;
    size_t keepFrom = end - start > kVisibleDigits ? end - kVisibleDigits : end;
    std::string out = value;
    for (size_t i = 0; i < out.size(); ++i)
        if (out[i] != ' ' && !(i >= keepFrom && i < end && end - start >= kShortestPan)) out[i] = '*';
    return out;
}

std::string KVRCardDataMasker::maskDigitRuns(const std::string& text) {
    std::string out = text;
    size_t i = 0;
    while (i < out.size()) {
        if (!isDigit(out[i])) {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < out.size() && isDigit(out[end])) ++end;
        if (end - i >= kShortestPan) std::fill(out.begin() + static_cast<std::ptrdiff_t>(i), out.begin() + static_cast<std::ptrdiff_t>(end - kVisibleDigits), '*');
        i = end;
    }
    return out;
}

std::string KVRCardDataMasker::maskRequest(const std::string& text) {
    std::string name = text.substr(0, 3);
    if (name == "GPN") {
        // The working key is present only for method 0, which moves the PAN.
        size_t panOffset = text.size() > 6 && text[6] == '0' ? 43 : 11;
        const Field fields[] = {{panOffset, 19, Mask::Track}};
        return maskFields(text, fields);
    }
    return isPlain(name) ? text : maskDigitRuns(text);
}

std::string KVRCardDataMasker::maskResponse(const std::string& text) {
    std::string name = text.substr(0, 3);
    if (name == "GCR") return maskFields(text, kGcrReplyFields);
    if (name == "GOC") return maskFields(text, kGocReplyFields);
    if (name == "GPN") return maskFields(text, kGpnReplyFields);
    return isPlain(name) ? text : maskDigitRuns(text);
}
