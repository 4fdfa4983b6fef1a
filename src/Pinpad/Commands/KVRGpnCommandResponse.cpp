#include "Pinpad/Commands/KVRGpnCommandResponse.h"

KVRGpnCommandResponse::KVRGpnCommandResponse(const char* response) : KVRBaseCommandResponse(response) {
    commandLength = reader.readInt(3);
    pinBlock = reader.readString(16);
    keySerialNumber = reader.readString(20);
}
