#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

/// Name and return code only.
class KVRTliCommandResponse : public KVRBaseCommandResponse {
public:
    using KVRBaseCommandResponse::KVRBaseCommandResponse;
};
