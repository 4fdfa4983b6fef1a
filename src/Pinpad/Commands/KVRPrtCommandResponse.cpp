#include "Pinpad/Commands/KVRPrtCommandResponse.h"

#include <kovra/KVRException.h>

#include "Utils/KVRStringUtil.h"

KVRPrtCommandResponse::KVRPrtCommandResponse(const char* response) : KVRBaseCommandResponse(response) {
    commandLength = reader.readInt(3);
    throw KVRException("NSGenericException", KVRStringUtil::format("Esperado %d.", commandLength));
}
