#include "KVRSimFrame.h"

#include "KVRSimCrc16.h"

#include <algorithm>

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
    std::string body(text);
    if (damage.straySynAfter) {
        body.insert(std::min(*damage.straySynAfter, body.size()), 1, kSyn);
    }
    std::string frame(1, kSyn);
    frame += body;
    frame.push_back(kEtb);
    frame.push_back(static_cast<char>(crc >> 8));
    frame.push_back(static_cast<char>(crc & 0xFF));
    return frame;
}
