#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <string>

class KVRCloCommandRequest : public KVRBaseCommandRequest {
public:
    /// Two 16-character display lines, exactly 32 characters.
    std::string message;

    void getCommand(char* buffer) override;
};
