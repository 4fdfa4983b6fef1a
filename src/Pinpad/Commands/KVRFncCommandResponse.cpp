#include "Pinpad/Commands/KVRFncCommandResponse.h"

#include <algorithm>

KVRFncCommandResponse::KVRFncCommandResponse(const char* response) : KVRBaseCommandResponse(response) {
    commandLength = reader.readInt(3);
    decision = reader.readInt(1);
    emvDataLength = reader.readInt(3) * 2;
    emvData = reader.readString(std::clamp<int32_t>(emvDataLength, 0, kEmvDataCapacity));
    issuerScriptResultLength = reader.readInt(2) * 2;
    issuerScriptResult =
        reader.readString(std::clamp<int32_t>(issuerScriptResultLength, 0, kIssuerScriptResultCapacity));
    acquirerLength = reader.readInt(3);
}
