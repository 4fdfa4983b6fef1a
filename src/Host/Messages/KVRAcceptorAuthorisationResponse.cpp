#include "Host/Messages/KVRAcceptorAuthorisationResponse.h"

#include "Host/Messages/KVRElementReading.h"

void KVRAcceptorAuthorisationResponse::read(const std::string& body) {
    KVRElementReading::descendTo(data, body, "AccptrAuthstnRspn");
}
