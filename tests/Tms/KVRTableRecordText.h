#pragma once

#include "Pinpad/Commands/KVRCommandRequestBuilder.h"
#include "Pinpad/Commands/KVRTableRecordCommand.h"

#include <string>

/// The text a table record appends to an empty command: its three-digit
/// length, then the record.
inline std::string recordText(const KVRTableRecordCommand& command) {
    char buffer[KVRCommandBufferSize];
    KVRCommandRequestBuilder builder(buffer);
    command.getCommand(builder);
    return std::string(buffer, static_cast<size_t>(builder.position()));
}

/// One field of a record layout and the characters expected there.
struct KVRRecordSlice {
    const char* field;
    size_t offset;
    size_t width;
    std::string expected;
};
