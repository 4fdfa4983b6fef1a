#include "Pinpad/Commands/KVRGocCommandResponse.h"

#include <algorithm>

KVRGocCommandResponse::KVRGocCommandResponse(const char* response) : KVRBaseCommandResponse(response) {
    commandLength = reader.readInt(3);
    decision = reader.readInt(1);
    signature = reader.readBool();
    pinOffline = reader.readBool();
    errorsPinOffline = reader.readInt(1);
    pinBlocked = reader.readBool();
    pinOnline = reader.readBool();
    pinBlock = reader.readString(16);
    keySerialNumber = reader.readString(20);
    emvDataLength = reader.readInt(3) * 2;
    emvData = reader.readString(std::clamp<int32_t>(emvDataLength, 0, kEmvDataCapacity));
    acquirerLength = reader.readInt(3);
}
