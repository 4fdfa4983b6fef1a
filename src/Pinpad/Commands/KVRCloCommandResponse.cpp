#include "Pinpad/Commands/KVRCloCommandResponse.h"

KVRCloCommandResponse::KVRCloCommandResponse(const char* response) : KVRBaseCommandResponse(response) {
    status = reader.readInt(3);
}
