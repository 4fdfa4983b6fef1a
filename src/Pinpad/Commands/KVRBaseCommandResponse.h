#pragma once

#include "Pinpad/Commands/KVRCommandResponseReader.h"

#include <cstdint>
#include <string>

/// The part every PIN pad reply carries: the command name and the return code.
class KVRBaseCommandResponse {
public:
    /// An empty reply: no name, status 0.
    KVRBaseCommandResponse() = default;
    explicit KVRBaseCommandResponse(const char* response);
    virtual ~KVRBaseCommandResponse();

    /// The three-letter command name echoed by the PIN pad.
    std::string responseId;
    /// The ABECS return code, 0 to 999.
    int32_t status = 0;
    /// Length of the data block, for the replies that have one.
    int32_t commandLength = 0;

protected:
    KVRCommandResponseReader reader;
};
