#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

#include <cstdint>

/// Print reply. Reading one always fails with "Esperado %d." (the block
/// length): the library never sends the print command, so any print reply is
/// unexpected. `printAction` and `printStatus` are never filled.
class KVRPrtCommandResponse : public KVRBaseCommandResponse {
public:
    KVRPrtCommandResponse() = default;
    explicit KVRPrtCommandResponse(const char* response);

    int32_t printAction = 0;
    int32_t printStatus = 0;
};
