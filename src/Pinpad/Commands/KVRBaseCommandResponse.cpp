#include "Pinpad/Commands/KVRBaseCommandResponse.h"

KVRBaseCommandResponse::KVRBaseCommandResponse(const char* response) : reader(response) {
    responseId = reader.readString(3);
    status = reader.readInt(3);
}

KVRBaseCommandResponse::~KVRBaseCommandResponse() = default;
