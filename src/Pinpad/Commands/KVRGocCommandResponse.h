#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// Chip processing reply: cardholder verification, PIN block and the EMV data for the host.
class KVRGocCommandResponse : public KVRBaseCommandResponse {
public:
    /// The largest EMV data the PIN pad can announce: 999 bytes as hexadecimal text.
    static constexpr size_t kEmvDataCapacity = 1998;

    KVRGocCommandResponse() = default;
    explicit KVRGocCommandResponse(const char* response);

    int32_t decision = 0;
    bool signature = false;
    bool pinOffline = false;
    int32_t errorsPinOffline = 0;
    bool pinBlocked = false;
    bool pinOnline = false;
    std::string pinBlock;         // 16
    std::string keySerialNumber;  // 20
    /// Characters of `emvData` announced (the byte count doubled).
    int32_t emvDataLength = 0;
    std::string emvData;
    int32_t acquirerLength = 0;
};
