#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/// What a test frame gets wrong on purpose.
struct KVRFrameDamage {
    bool wrongCrc = false;
    bool straySyn = false;  // one more SYN in the middle of the text
    bool stuffed = false;   // DC3, SYN and ETB of the text escaped (DC3, byte + 0x20)
};

/// The frame format as the tests write and check it: SYN, text, ETB, then the
/// CRC-16/XMODEM of text and ETB, high byte first. Written apart from the
/// library's codec and from the emulator's, so that neither can share a
/// mistake with the tests that check it.
class KVRAbecsWire {
public:
    static constexpr char kEot = 0x04;
    static constexpr char kAck = 0x06;
    static constexpr char kDc3 = 0x13;
    static constexpr char kNak = 0x15;
    static constexpr char kSyn = 0x16;
    static constexpr char kEtb = 0x17;
    static constexpr char kCan = 0x18;

    static uint16_t crc(std::string_view bytes);

    using Damage = KVRFrameDamage;
    static std::string frame(std::string_view text, Damage damage = {});
    static std::string bytes(std::initializer_list<int> values);
    static std::string hexDump(std::string_view bytes);
};
