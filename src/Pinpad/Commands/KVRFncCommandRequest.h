#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

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

    /// The longest issuer data a frame can carry: 1023 characters of command
    /// text, less "FNC" and block 1's length (6), block 1's fixed fields (10)
    /// and the tag block with its length (58), rounded down to whole bytes.
    static constexpr size_t kMaximumIssuerDataLength = 948;

    /// Issuer data the PIN pad can be given: whole bytes of hexadecimal text
    /// that fit the frame (empty included).
    static bool isValidIssuerData(std::string_view hex);

    void getCommand(char* buffer) override;
};
