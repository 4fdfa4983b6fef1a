#include "support/KVRReferenceCrc.h"

#include <array>

namespace {

constexpr std::array<uint16_t, 256> makeTable() {
    std::array<uint16_t, 256> table{};
    for (unsigned byte = 0; byte < 256; ++byte) {
        auto crc = static_cast<uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
        table[byte] = crc;
    }
    return table;
}

constexpr std::array<uint16_t, 256> kTable = makeTable();

}  // namespace

uint16_t KVRReferenceCrc::xmodem(const uint8_t* bytes, size_t length) {
    uint16_t crc = 0;
    for (size_t i = 0; i < length; ++i) crc = static_cast<uint16_t>((crc << 8) ^ kTable[((crc >> 8) ^ bytes[i]) & 0xFF]);
    return crc;
}
