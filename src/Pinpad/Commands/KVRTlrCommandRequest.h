#pragma once

#include "Pinpad/Commands/KVRBaseCommandRequest.h"
#include "Pinpad/Commands/KVRTableRecordCommand.h"

#include <memory>

/// Loads one AID record, one CAPK record, or one of each.
class KVRTlrCommandRequest : public KVRBaseCommandRequest {
public:
    std::shared_ptr<const KVRTableRecordCommand> aidCommand;
    std::shared_ptr<const KVRTableRecordCommand> capkCommand;

    void getCommand(char* buffer) override;
};
