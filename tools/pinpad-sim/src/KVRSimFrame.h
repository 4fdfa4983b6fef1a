#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Control bytes of the PIN pad link and the writer of outgoing frames:
/// SYN, text, ETB, then the CRC of text and ETB, high byte first. Inside the
/// text, DC3, SYN and ETB travel as DC3 followed by the byte plus 0x20; the
/// CRC covers the original bytes and is itself never stuffed.
class KVRSimFrame {
public:
    static constexpr char kEot = 0x04;
    static constexpr char kAck = 0x06;
    static constexpr char kDc3 = 0x13;
    static constexpr char kNak = 0x15;
    static constexpr char kSyn = 0x16;
    static constexpr char kEtb = 0x17;
    static constexpr char kCan = 0x18;

    /// How a frame may be damaged on purpose to exercise the client's reader.
    struct Damage {
        /// Insert a SYN after this many characters of the text (not covered by the CRC).
        std::optional<size_t> straySynAfter;
        /// Send a CRC that does not match the text.
        bool wrongCrc = false;
    };

    KVRSimFrame() = delete;
    static std::string encode(std::string_view text);
    static std::string encode(std::string_view text, const Damage& damage);
    /// The byte a stuffed pair DC3, `second` stands for; none when the pair is not one.
    static std::optional<char> unstuffed(unsigned char second);
};
