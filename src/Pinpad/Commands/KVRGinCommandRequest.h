#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <cstdint>

class KVRGinCommandRequest : public KVRBaseCommandRequest {
public:
    int32_t acqidx = 0;

    void getCommand(char* buffer) override;
};
