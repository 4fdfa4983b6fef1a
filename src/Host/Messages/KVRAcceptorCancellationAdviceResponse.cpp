#include "Host/Messages/KVRAcceptorCancellationAdviceResponse.h"

#include "Host/Messages/KVRElementReading.h"

void KVRAcceptorCancellationAdviceResponse::read(const std::string& body) {
    KVRElementReading::descendTo(data, body, "AccptrCxlAdvcRspn");
}
