#pragma once

#include <cstddef>
#include <cstdint>

/// CRC-16/XMODEM (polynomial 0x1021, initial 0, no reflection, no final XOR)
/// the usual table-driven way: one table lookup per byte. It is the anchor the
/// link's own CRC is measured against, and it frames what the benchmark PIN
/// pad sends, so the library's framing is never checked against itself.
class KVRReferenceCrc {
public:
    KVRReferenceCrc() = delete;

    static uint16_t xmodem(const uint8_t* bytes, size_t length);
};
