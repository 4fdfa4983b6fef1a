#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

/// Close reply. `status` ends up holding the three digits that follow the
/// return code (the block length), which is what callers of CLO have always seen.
class KVRCloCommandResponse : public KVRBaseCommandResponse {
public:
    KVRCloCommandResponse() = default;
    explicit KVRCloCommandResponse(const char* response);
};
