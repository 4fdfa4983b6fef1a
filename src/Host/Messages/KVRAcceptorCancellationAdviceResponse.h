#pragma once

#include "Host/Messages/KVRCancellationAdviceResponseData.h"

#include <optional>
#include <string>

/// The reply to a cancellation advice. A body that is not XML or carries no
/// `AccptrCxlAdvcRspn` leaves `data` empty; reading never throws.
class KVRAcceptorCancellationAdviceResponse {
public:
    std::optional<KVRAcceptorCancellationAdviceResponseData> data;

    void read(const std::string& body);
};
