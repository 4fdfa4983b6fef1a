#include "testing/KVRAbecsWire.h"

#include <cstdio>

uint16_t KVRAbecsWire::crc(std::string_view bytes) {
    uint16_t value = 0;
    for (unsigned char byte : bytes) {
        value ^= static_cast<uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit)
            value = (value & 0x8000) ? static_cast<uint16_t>((value << 1) ^ 0x1021) : static_cast<uint16_t>(value << 1);
    }
    return value;
}

std::string KVRAbecsWire::frame(std::string_view text, Damage damage) {
    std::string covered = std::string(text) + kEtb;
    uint16_t value = crc(covered);
    if (damage.wrongCrc) value ^= 0x5A5A;
    std::string out(1, kSyn);
    for (size_t i = 0; i < text.size(); ++i) {
        if (damage.straySyn && i == text.size() / 2) out += kSyn;
        char byte = text[i];
        if (damage.stuffed && (byte == kDc3 || byte == kSyn || byte == kEtb)) {
            out += kDc3;
            out += static_cast<char>(byte + 0x20);
        } else {
            out += byte;
        }
    }
    if (damage.straySyn && text.empty()) out += kSyn;
    out += kEtb;
    out += static_cast<char>(value >> 8);
    out += static_cast<char>(value & 0xFF);
    return out;
}

std::string KVRAbecsWire::bytes(std::initializer_list<int> values) {
    std::string result;
    for (int value : values) result.push_back(static_cast<char>(value));
    return result;
}

std::string KVRAbecsWire::hexDump(std::string_view bytes) {
    std::string text;
    char byte[4];
    for (unsigned char c : bytes) {
        std::snprintf(byte, sizeof byte, "%02X ", c);
        text += byte;
    }
    return text;
}
