#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The host's side of the frame format, written here independently of the
/// emulator so that the two cannot share a mistake.
class KVRSimTestWire {
public:
    static constexpr char kEot = 0x04;
    static constexpr char kAck = 0x06;
    static constexpr char kNak = 0x15;
    static constexpr char kSyn = 0x16;
    static constexpr char kEtb = 0x17;
    static constexpr char kCan = 0x18;

    static uint16_t crc(std::string_view bytes);
    /// SYN, text, ETB, CRC over text and ETB (high byte first).
    static std::string frame(std::string_view text);
    /// The same with a CRC that is off by one.
    static std::string frameWithWrongCrc(std::string_view text);
    static std::string bytes(std::initializer_list<int> values);
    static std::string hexDump(std::string_view bytes);
};
