#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <cstdint>
#include <string>

/// Chip processing up to the on-line decision, with on-line PIN.
class KVRGocCommandRequest : public KVRBaseCommandRequest {
public:
    int64_t amount = 0;
    int32_t cashback = 0;
    bool exclist = false;
    bool connect = false;
    int32_t ruf = 0;
    int32_t method = 0;
    int32_t keydix = 0;
    /// Exactly 32 characters.
    std::string wkenc;
    int32_t riskman = 0;
    int64_t flrlimit = 0;
    int32_t tpbrs = 0;
    int64_t tvbrs = 0;
    int32_t mtpbrs = 0;
    int32_t acqidx = 0;
    /// Acquirer data: 3 characters for acquirer 1, 26 for acquirer 2, empty otherwise.
    std::string acqpr;
    /// EMV tags to return, as hexadecimal text.
    std::string tags1;
    /// Optional EMV tags, as hexadecimal text.
    std::string tags2;
    int32_t acrprTransactionType = 0;
    bool acqprBool = false;
    /// Exactly 32 characters, sent for acquirer 2.
    std::string acqprPin;

    void getCommand(char* buffer) override;

private:
    int acquirerDataLength() const;
};
