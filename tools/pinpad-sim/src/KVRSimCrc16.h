#pragma once

#include <cstdint>
#include <string_view>

/// CRC-16/XMODEM (polynomial 0x1021, initial 0, no reflection, no final XOR),
/// the checksum that closes every frame on the PIN pad link.
class KVRSimCrc16 {
public:
    KVRSimCrc16() = delete;
    static uint16_t compute(std::string_view bytes);
};
