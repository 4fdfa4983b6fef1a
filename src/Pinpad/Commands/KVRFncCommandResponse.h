#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// Reply to the end of chip processing: the card's final decision.
class KVRFncCommandResponse : public KVRBaseCommandResponse {
public:
    /// 999 bytes of EMV data as hexadecimal text.
    static constexpr size_t kEmvDataCapacity = 1998;
    /// 99 bytes of issuer script results as hexadecimal text.
    static constexpr size_t kIssuerScriptResultCapacity = 198;

    KVRFncCommandResponse() = default;
    explicit KVRFncCommandResponse(const char* response);

    int32_t decision = 0;
    /// Characters announced (the byte count doubled).
    int32_t emvDataLength = 0;
    std::string emvData;
    /// Characters announced (the byte count doubled).
    int32_t issuerScriptResultLength = 0;
    std::string issuerScriptResult;
    int32_t acquirerLength = 0;
};
