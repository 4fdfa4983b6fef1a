#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <string>

class KVRDspCommandRequest : public KVRBaseCommandRequest {
public:
    /// Up to 32 characters (two 16-character lines).
    std::string message;

    void getCommand(char* buffer) override;
};
