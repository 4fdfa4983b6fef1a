#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <cstdint>
#include <string>

/// Ends chip processing with the host's answer.
class KVRFncCommandRequest : public KVRBaseCommandRequest {
public:
    int32_t communicationStatus = 0;
    /// Exactly 2 characters.
    std::string authorizationResponseCode;
    /// Issuer EMV data from the host, as hexadecimal text.
    std::string issuerDataEmv;
    /// EMV tags to return, as hexadecimal text.
    std::string tags;

    void getCommand(char* buffer) override;
};
