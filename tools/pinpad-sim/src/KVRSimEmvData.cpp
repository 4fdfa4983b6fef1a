#include "KVRSimEmvData.h"

#include "KVRSimLayoutError.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

std::string hexOfText(const std::string& text) {
    std::string hex;
    char byte[3];
    for (unsigned char c : text) {
        std::snprintf(byte, sizeof byte, "%02X", c);
        hex += byte;
    }
    return hex;
}

std::string hex16(uint16_t value) {
    char text[5];
    std::snprintf(text, sizeof text, "%04X", value);
    return text;
}

unsigned byteAt(const std::string& hex, size_t index) {
    return static_cast<unsigned>(std::stoul(hex.substr(index * 2, 2), nullptr, 16));
}

}  // namespace

const std::vector<std::string>& KVRSimEmvData::defaultTags() {
    static const std::vector<std::string> tags{"5F2A", "82",   "95",   "9A",   "9C",   "9F02", "9F10", "9F1A",
                                               "9F1E", "9F26", "9F33", "9F36", "9F37", "9F27", "9F34"};
    return tags;
}

std::vector<std::string> KVRSimEmvData::parseTagList(const std::string& hex) {
    if (hex.size() % 2 != 0 || !std::all_of(hex.begin(), hex.end(), [](unsigned char c) { return std::isxdigit(c); })) {
        throw KVRSimLayoutError("tag list: not whole bytes of hexadecimal");
    }
    std::vector<std::string> tags;
    size_t bytes = hex.size() / 2;
    for (size_t i = 0; i < bytes;) {
        size_t start = i;
        bool more = (byteAt(hex, i++) & 0x1F) == 0x1F;
        while (more) {
            if (i >= bytes) {
                throw KVRSimLayoutError("tag list: the last tag is cut short");
            }
            more = (byteAt(hex, i++) & 0x80) != 0;
        }
        tags.push_back(upper(hex.substr(start * 2, (i - start) * 2)));
    }
    return tags;
}

std::string KVRSimEmvData::encodeLength(size_t bytes) {
    char text[24];
    if (bytes < 0x80) {
        std::snprintf(text, sizeof text, "%02zX", bytes);
    } else {
        std::snprintf(text, sizeof text, "81%02zX", bytes);
    }
    return text;
}

std::string KVRSimEmvData::build(const std::vector<std::string>& tags, const Context& context) {
    std::string data;
    for (const auto& tag : tags) {
        if (auto value = valueOf(tag, context)) {
            data += tag + encodeLength(value->size() / 2) + *value;
        }
    }
    return data;
}

std::optional<std::string> KVRSimEmvData::valueOf(const std::string& tag, const Context& c) {
    std::string pan = c.card.pan.size() % 2 ? c.card.pan + "F" : c.card.pan;
    std::string track2 = c.card.secondTrack();
    std::replace(track2.begin(), track2.end(), '=', 'D');
    if (track2.size() % 2) {
        track2 += "F";
    }
    char sequence[8];
    std::snprintf(sequence, sizeof sequence, "%02d", c.card.panSequenceNumber % 100);
    const std::pair<const char*, std::string> values[] = {
        {"4F", c.card.aid},
        {"50", hexOfText(c.card.applicationLabel)},
        {"57", track2},
        {"5A", pan},
        {"5F24", c.card.expiry + c.card.expirationDate().substr(4)},
        {"5F2A", "0986"},
        {"5F34", sequence},
        {"82", c.card.applicationInterchangeProfile},
        {"84", c.card.aid},
        {"95", c.verificationResults},
        {"9A", c.date},
        {"9C", "00"},
        {"9F02", c.amount},
        {"9F03", "000000000000"},
        {"9F06", c.card.aid},
        {"9F10", c.card.issuerApplicationData},
        {"9F1A", "0076"},
        {"9F1E", hexOfText(c.terminalSerial)},
        {"9F26", c.cryptogram},
        {"9F27", c.cryptogramInformation},
        {"9F33", "E0F0C8"},
        {"9F34", c.cvmResults},
        {"9F35", "22"},
        {"9F36", hex16(c.transactionCounter)},
        {"9F37", c.unpredictableNumber},
    };
    for (const auto& [name, value] : values) {
        if (tag == name && !value.empty()) {
            return value;
        }
    }
    return std::nullopt;
}
