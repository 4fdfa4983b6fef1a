#include "KVRSimCrc16.h"

uint16_t KVRSimCrc16::compute(std::string_view bytes) {
    uint16_t crc = 0;
    for (unsigned char byte : bytes) {
        crc ^= static_cast<uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc & 0x8000) ? static_cast<uint16_t>((crc << 1) ^ 0x1021) : static_cast<uint16_t>(crc << 1);
        }
    }
    return crc;
}
