#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <cstdint>
#include <string>

/// PIN entry for a magnetic-stripe card.
class KVRGpnCommandRequest : public KVRBaseCommandRequest {
public:
    int32_t method = 0;
    int32_t keydix = 0;
    /// 32 characters; written only when `method` is 0.
    std::string wkenc;
    int32_t panLength = 0;
    /// Up to 19 digits.
    std::string pan;
    int32_t entries = 0;
    int32_t minimum = 0;
    int32_t maximum = 0;
    /// Up to 32 characters shown while the PIN is typed.
    std::string message;

    void getCommand(char* buffer) override;
};
