#pragma once

#include "Host/Messages/KVRCancellationAdviceResponseData.h"

#include <memory>
#include <string>

/// The reply to a cancellation advice. A body that is not XML or carries no
/// `AccptrCxlAdvcRspn` leaves `data` null; reading never throws.
class KVRAcceptorCancellationAdviceResponse {
public:
    std::shared_ptr<KVRAcceptorCancellationAdviceResponseData> data;

    void read(const std::string& body);
};
