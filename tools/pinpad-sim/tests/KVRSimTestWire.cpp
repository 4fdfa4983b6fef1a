#include "KVRSimTestWire.h"

#include <cstdio>

uint16_t KVRSimTestWire::crc(std::string_view bytes) {
    uint16_t value = 0;
    for (unsigned char byte : bytes) {
        uint16_t word = static_cast<uint16_t>(byte << 8);
        for (int i = 0; i < 8; ++i) {
            bool top = ((value ^ word) & 0x8000) != 0;
            value = static_cast<uint16_t>(value << 1);
            if (top) {
                value ^= 0x1021;
            }
            word = static_cast<uint16_t>(word << 1);
        }
    }
    return value;
}

std::string KVRSimTestWire::frame(std::string_view text) {
    std::string covered = std::string(text) + kEtb;
    uint16_t value = crc(covered);
    return std::string(1, kSyn) + covered + static_cast<char>(value >> 8) + static_cast<char>(value & 0xFF);
}

std::string KVRSimTestWire::frameWithWrongCrc(std::string_view text) {
    std::string framed = frame(text);
    framed.back() = static_cast<char>(framed.back() + 1);
    return framed;
}

std::string KVRSimTestWire::bytes(std::initializer_list<int> values) {
    std::string result;
    for (int value : values) {
        result.push_back(static_cast<char>(value));
    }
    return result;
}

std::string KVRSimTestWire::hexDump(std::string_view bytes) {
    std::string text;
    char byte[4];
    for (unsigned char c : bytes) {
        std::snprintf(byte, sizeof byte, "%02X ", c);
        text += byte;
    }
    return text;
}
