#include "Pinpad/Commands/KVRGinCommandResponse.h"

KVRGinCommandResponse::KVRGinCommandResponse(const char* response) : KVRBaseCommandResponse(response) {
    commandLength = reader.readInt(3);
    name = reader.readString(20);
    model = reader.readString(19);
    ctlssup = reader.readString(1);
    sover = reader.readString(20);
    specver = reader.readString(4);
    manver = reader.readString(16);
    serialNumber = reader.readString(20);
}
