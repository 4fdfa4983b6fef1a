#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

/// No fields: the text is the name and an empty block.
class KVRTleCommandRequest : public KVRBaseCommandRequest {
public:
    void getCommand(char* buffer) override;
};
