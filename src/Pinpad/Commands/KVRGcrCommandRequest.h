#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

/// Card read (magnetic stripe or chip).
class KVRGcrCommandRequest : public KVRBaseCommandRequest {
public:
    /// Takes `date` from KVRClock.
    KVRGcrCommandRequest();

    int32_t acqidxreq = 0;
    int32_t apptypreq = 0;
    /// In the smallest currency unit.
    int64_t amount = 0;
    std::chrono::system_clock::time_point date;
    /// Table version stamp, up to 10 characters.
    std::string tabver;
    /// Not sent to the PIN pad.
    std::vector<std::string> idappList;

    void getCommand(char* buffer) override;
};
