#include "Pinpad/KVRAbecsFrameCodec.h"

#include <array>

namespace {

// CRC-16/XMODEM of every byte value: polynomial 0x1021, most significant bit first.
constexpr std::array<uint16_t, 256> makeCrcTable() {
    std::array<uint16_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        auto crc = static_cast<uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit) crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
        table[byte] = crc;
    }
    return table;
}
constexpr std::array<uint16_t, 256> kCrcTable = makeCrcTable();

constexpr uint8_t kStuffOffset = 0x20;  // 0x13 -> 13 33, 0x16 -> 13 36, 0x17 -> 13 37

bool needsStuffing(uint8_t byte) {
    return byte == KVRAbecsFrameCodec::kDc3 || byte == KVRAbecsFrameCodec::kSyn || byte == KVRAbecsFrameCodec::kEtb;
}

}  // namespace

// One table lookup per byte: check value 0x31C3 for "123456789".
uint16_t KVRAbecsFrameCodec::crc(const uint8_t* bytes, size_t length) {
    uint16_t crc = 0;
    for (size_t i = 0; i < length; ++i)
        crc = static_cast<uint16_t>((crc << 8) ^ kCrcTable[((crc >> 8) ^ bytes[i]) & 0xFF]);
    return crc;
}

std::vector<uint8_t> KVRAbecsFrameCodec::encode(std::string_view text, bool stuffing) {
    std::vector<uint8_t> packet;
    packet.reserve(text.size() + 8);
    packet.push_back(kSyn);
    for (char c : text) {
        auto byte = static_cast<uint8_t>(c);
        if (stuffing && needsStuffing(byte)) {
            packet.push_back(kDc3);
            packet.push_back(static_cast<uint8_t>(byte + kStuffOffset));
        } else {
            packet.push_back(byte);
        }
    }
    packet.push_back(kEtb);
    // The CRC covers the original text, so it is computed apart from the stuffed bytes.
    uint16_t sum = crc(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    sum = static_cast<uint16_t>((sum << 8) ^ kCrcTable[((sum >> 8) ^ kEtb) & 0xFF]);
    packet.push_back(static_cast<uint8_t>(sum >> 8));
    packet.push_back(static_cast<uint8_t>(sum & 0xFF));
    return packet;
}

void KVRAbecsFrameCodec::reset() {
    state_ = State::Idle;
    text_.clear();
    overlong_ = false;
}

void KVRAbecsFrameCodec::store(uint8_t byte) {
    if (text_.size() < kMaximumTextLength) text_.push_back(static_cast<char>(byte));
    else overlong_ = true;
}

KVRAbecsFrameCodec::Event KVRAbecsFrameCodec::feed(uint8_t byte) {
    Event event;
    switch (state_) {
    case State::Idle:
        if (byte == kSyn) {
            text_.clear();
            overlong_ = false;
            state_ = State::Text;
        } else {
            event.kind = Event::Kind::Byte;
            event.byte = byte;
        }
        break;
    case State::Text:
        if (byte == kEtb) {
            state_ = State::CrcHigh;
        } else if (byte == kSyn) {
            // Stuffed text never holds a bare SYN: a new packet starts. The
            // default link's PIN pads may send stray ones, which are dropped.
            if (stuffing_) {
                text_.clear();
                overlong_ = false;
            }
        } else if (stuffing_ && byte == kDc3) {
            state_ = State::Escape;
        } else {
            store(byte);
        }
        break;
    case State::Escape:
        // A malformed escape keeps its byte; the CRC then tells.
        store(needsStuffing(static_cast<uint8_t>(byte - kStuffOffset)) ? static_cast<uint8_t>(byte - kStuffOffset) : byte);
        state_ = State::Text;
        break;
    case State::CrcHigh:
        crcReceived_ = static_cast<uint16_t>(byte << 8);
        state_ = State::CrcLow;
        break;
    case State::CrcLow: {
        crcReceived_ |= byte;
        state_ = State::Idle;
        if (overlong_) {
            event.kind = Event::Kind::Overlong;
        } else {
            std::string payload = text_;
            payload.push_back(static_cast<char>(kEtb));
            event.kind = Event::Kind::Frame;
            event.crcMatches = crc(reinterpret_cast<const uint8_t*>(payload.data()), payload.size()) == crcReceived_;
            event.text = std::move(text_);
        }
        text_.clear();
        overlong_ = false;
        break;
    }
    }
    return event;
}
