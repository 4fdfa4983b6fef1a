#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

#include <string>

/// The encrypted PIN of a magnetic-stripe sale.
class KVRGpnCommandResponse : public KVRBaseCommandResponse {
public:
    KVRGpnCommandResponse() = default;
    explicit KVRGpnCommandResponse(const char* response);

    std::string pinBlock;         // 16
    std::string keySerialNumber;  // 20
};
