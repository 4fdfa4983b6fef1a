#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <cstdint>
#include <string>

class KVRTliCommandRequest : public KVRBaseCommandRequest {
public:
    int32_t acqidxreq = 0;
    /// Table version stamp, up to 10 characters.
    std::string tabver;

    void getCommand(char* buffer) override;
};
