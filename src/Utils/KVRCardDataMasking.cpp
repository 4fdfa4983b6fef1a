#include "Utils/KVRCardDataMasking.h"

#include <kovra/KVRLoggingUtil.h>

#include <algorithm>
#include <array>

namespace {

constexpr size_t kPanHead = 6;
constexpr size_t kPanTail = 4;
constexpr size_t kNameLength = 3;
// Name and return code: what stays of a reply nobody here knows.
constexpr size_t kReplyHeadLength = 6;

enum class Mask { Pan, Whole };

struct Field {
    size_t offset;
    size_t width;
    Mask mask;
};

// Offsets in the reply texts: name (3), return code (3), block length (3), then the fields.
constexpr Field kGcrReplyFields[] = {
    {20, 76, Mask::Whole},   // first track
    {98, 37, Mask::Whole},   // second track
    {138, 104, Mask::Whole}, // third track
    {244, 19, Mask::Pan},    // PAN
    {284, 26, Mask::Whole},  // cardholder name
};
constexpr Field kGocReplyFields[] = {{15, 16, Mask::Whole}, {31, 20, Mask::Whole}};  // PIN block, key serial number
constexpr Field kGpnReplyFields[] = {{9, 16, Mask::Whole}, {25, 20, Mask::Whole}};   // PIN block, key serial number

// Commands and notifications whose texts carry no card data, both ways.
constexpr std::array<std::string_view, 12> kPlainNames = {"OPN", "CLO", "GIN", "DSP", "RMC", "PRT",
                                                          "TLI", "TLR", "TLE", "GOC", "FNC", "NTM"};

// XML elements holding card data, by local name.
struct Element {
    std::string_view name;
    Mask mask;
};
constexpr Element kCardElements[] = {
    {"PAN", Mask::Pan},           {"TrckVal", Mask::Whole},   {"NcrptdData", Mask::Whole},
    {"NcrptdKey", Mask::Whole},   {"DerivtnId", Mask::Whole}, {"CSCVal", Mask::Whole},
    {"CrdhldrIdVal", Mask::Whole}, {"CrdhldrNm", Mask::Whole},
};

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string masked(std::string_view value, Mask mask) {
    return mask == Mask::Pan ? KVRCardDataMasking::maskPan(value) : KVRCardDataMasking::maskWhole(value);
}

template <size_t N>
std::string maskFields(std::string_view text, const Field (&fields)[N]) {
    std::string out(text);
    for (const Field& field : fields) {
        if (field.offset >= out.size()) break;
        size_t width = std::min(field.width, out.size() - field.offset);
        out.replace(field.offset, width, masked(text.substr(field.offset, width), field.mask));
    }
    return out;
}

bool isPlain(std::string_view name) { return std::find(kPlainNames.begin(), kPlainNames.end(), name) != kPlainNames.end(); }

std::string maskFrom(std::string_view text, size_t keep) {
    if (text.size() <= keep) return std::string(text);
    return std::string(text.substr(0, keep)) + KVRCardDataMasking::maskWhole(text.substr(keep));
}

const Element* cardElement(std::string_view qualifiedName) {
    size_t colon = qualifiedName.rfind(':');
    std::string_view local = colon == std::string_view::npos ? qualifiedName : qualifiedName.substr(colon + 1);
    for (const Element& element : kCardElements)
        if (element.name == local) return &element;
    return nullptr;
}

}  // namespace

std::string KVRCardDataMasking::maskWhole(std::string_view value) {
    // Spaces inside the value (a cardholder name's) would show its shape.
    size_t first = value.find_first_not_of(' ');
    if (first == std::string_view::npos) return std::string(value);
    size_t last = value.find_last_not_of(' ');
    std::string out(value);
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(first), out.begin() + static_cast<std::ptrdiff_t>(last + 1), '*');
    return out;
}

std::string KVRCardDataMasking::maskPan(std::string_view pan) {
    size_t characters = static_cast<size_t>(std::count_if(pan.begin(), pan.end(), [](char c) { return c != ' '; }));
    if (characters <= kPanHead + kPanTail) return maskWhole(pan);
    std::string out(pan);
    size_t seen = 0;
    for (char& c : out) {
        if (c == ' ') continue;
        if (seen >= kPanHead && seen < characters - kPanTail) c = '*';
        ++seen;
    }
    return out;
}

std::string KVRCardDataMasking::maskPinpadRequest(std::string_view text) {
    std::string_view name = text.substr(0, kNameLength);
    if (name == "GPN") {
        // The working key is present only for method 0, which moves the PAN.
        size_t panOffset = text.size() > 6 && text[6] == '0' ? 43 : 11;
        const Field fields[] = {{panOffset, 19, Mask::Pan}};
        return maskFields(text, fields);
    }
    return isPlain(name) ? std::string(text) : maskFrom(text, kNameLength);
}

std::string KVRCardDataMasking::maskPinpadReply(std::string_view text) {
    std::string_view name = text.substr(0, kNameLength);
    if (name == "GCR") return maskFields(text, kGcrReplyFields);
    if (name == "GOC") return maskFields(text, kGocReplyFields);
    if (name == "GPN") return maskFields(text, kGpnReplyFields);
    return isPlain(name) ? std::string(text) : maskFrom(text, kReplyHeadLength);
}

std::string KVRCardDataMasking::maskXml(std::string_view xml) {
    std::string out(xml);
    size_t at = 0;
    while ((at = out.find('<', at)) != std::string::npos) {
        ++at;
        if (at >= out.size() || out[at] == '/' || out[at] == '!' || out[at] == '?') continue;
        size_t nameEnd = at;
        while (nameEnd < out.size() && !isSpace(out[nameEnd]) && out[nameEnd] != '/' && out[nameEnd] != '>') ++nameEnd;
        const Element* element = cardElement(std::string_view(out).substr(at, nameEnd - at));
        size_t tagEnd = out.find('>', nameEnd);
        if (tagEnd == std::string::npos) break;
        at = tagEnd + 1;
        if (!element || out[tagEnd - 1] == '/') continue;
        size_t textEnd = std::min(out.find('<', at), out.size());
        out.replace(at, textEnd - at, masked(std::string_view(out).substr(at, textEnd - at), element->mask));
        at = textEnd;
    }
    return out;
}

std::string KVRCardDataMasking::pinpadRequestForLog(std::string_view text) {
    return KVRLoggingUtil::logsCardData() ? std::string(text) : maskPinpadRequest(text);
}

std::string KVRCardDataMasking::pinpadReplyForLog(std::string_view text) {
    return KVRLoggingUtil::logsCardData() ? std::string(text) : maskPinpadReply(text);
}

std::string KVRCardDataMasking::xmlForLog(std::string_view xml) {
    return KVRLoggingUtil::logsCardData() ? std::string(xml) : maskXml(xml);
}
