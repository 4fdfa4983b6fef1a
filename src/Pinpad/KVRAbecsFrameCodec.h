#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// ABECS packets without any I/O: encoding, incremental decoding, DC3 byte
/// stuffing and the CRC-16/XMODEM. The link feeds it the bytes it reads and
/// acts on what it reports.
///
/// Packet: SYN, text, ETB, CRC (high byte first) over the original text and
/// the ETB. With stuffing, 0x13, 0x16 and 0x17 inside the text travel as
/// 13 33, 13 36 and 13 37; the CRC bytes are never stuffed. Without it (the
/// default link) the text goes as it is and a SYN inside a frame is dropped.
class KVRAbecsFrameCodec {
public:
    static constexpr uint8_t kEot = 0x04;
    static constexpr uint8_t kAck = 0x06;
    static constexpr uint8_t kDc3 = 0x13;
    static constexpr uint8_t kNak = 0x15;
    static constexpr uint8_t kSyn = 0x16;
    static constexpr uint8_t kEtb = 0x17;
    static constexpr uint8_t kCan = 0x18;
    /// Longest text a PIN pad sends for the commands this library uses.
    static constexpr size_t kMaximumTextLength = 1024;

    struct Event {
        enum class Kind {
            /// Nothing complete yet.
            None,
            /// A byte outside any frame (ACK, NAK, EOT, noise): `byte`.
            Byte,
            /// A whole frame: `text` unstuffed, `crcMatches`.
            Frame,
            /// A frame longer than kMaximumTextLength, dropped whole.
            Overlong,
        };
        Kind kind = Kind::None;
        uint8_t byte = 0;
        std::string text;
        bool crcMatches = false;
    };

    explicit KVRAbecsFrameCodec(bool stuffing = false) : stuffing_(stuffing) {}

    static uint16_t crc(const uint8_t* bytes, size_t length);
    /// The whole packet for a text.
    static std::vector<uint8_t> encode(std::string_view text, bool stuffing);

    /// Takes one received byte.
    Event feed(uint8_t byte);
    /// Forgets any frame begun.
    void reset();
    bool stuffing() const { return stuffing_; }
    void setStuffing(bool stuffing) { stuffing_ = stuffing; }

private:
    enum class State { Idle, Text, Escape, CrcHigh, CrcLow };
    void store(uint8_t byte);

    bool stuffing_;
    State state_ = State::Idle;
    std::string text_;
    bool overlong_ = false;
    uint16_t crcReceived_ = 0;
};
