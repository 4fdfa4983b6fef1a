#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

/// Name and return code only.
class KVRDspCommandResponse : public KVRBaseCommandResponse {
public:
    using KVRBaseCommandResponse::KVRBaseCommandResponse;
};
