#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"

#include <cstdint>
#include <string>

/// Print command. The library does not send it; kept for PIN pads with a printer.
class KVRPrtCommandRequest : public KVRBaseCommandRequest {
public:
    /// 0 prints `message`, 1 moves horizontally, 2 feeds paper.
    int32_t printAction = 0;
    int32_t size = 0;
    int32_t alignment = 0;
    std::string message;
    int32_t horizontal = 0;
    int32_t steps = 0;

    void getCommand(char* buffer) override;
};
