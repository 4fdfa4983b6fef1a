#include "KVRSimFrame.h"

#include "KVRSimCrc16.h"


namespace {

constexpr char kStuffingOffset = 0x20;

bool needsStuffing(char byte) {
    return byte == KVRSimFrame::kDc3 || byte == KVRSimFrame::kSyn || byte == KVRSimFrame::kEtb;
}

}  // namespace

std::string KVRSimFrame::encode(std::string_view text) {
    return encode(text, Damage{});
}

std::string KVRSimFrame::encode(std::string_view text, const Damage& damage) {
    std::string covered(text);
    covered.push_back(kEtb);
    uint16_t crc = KVRSimCrc16::compute(covered);
    if (damage.wrongCrc) {
        crc ^= 0xFFFF;
    }
    std::string frame(1, kSyn);
    for (size_t i = 0; i < text.size(); ++i) {
        if (damage.straySynAfter && *damage.straySynAfter == i) {
            frame.push_back(kSyn);
        }
        if (needsStuffing(text[i])) {
            frame.push_back(kDc3);
            frame.push_back(static_cast<char>(text[i] + kStuffingOffset));
        } else {
            frame.push_back(text[i]);
        }
    }
    if (damage.straySynAfter && *damage.straySynAfter >= text.size()) {
        frame.push_back(kSyn);
    }
    frame.push_back(kEtb);
    frame.push_back(static_cast<char>(crc >> 8));
    frame.push_back(static_cast<char>(crc & 0xFF));
    return frame;
}

std::optional<char> KVRSimFrame::unstuffed(unsigned char second) {
    char original = static_cast<char>(second - kStuffingOffset);
    if (second < kStuffingOffset || !needsStuffing(original)) {
        return std::nullopt;
    }
    return original;
}
