#pragma once

#include "Host/Messages/KVRCancellationAdviceResponseData.h"

#include <optional>
#include <string>

/// The reply to a cancellation advice. A body that is not XML or carries no
/// `AccptrCxlAdvcRspn` leaves `data` empty; reading never throws.
class KVRAcceptorCancellationAdviceResponse {
public:
    KVRAcceptorCancellationAdviceResponse();

    std::optional<KVRAcceptorCancellationAdviceResponseData> data;

    void read(const std::string& body);
};

// Written by hand, the constructor leaves the empty optional as it is; the
// implicit one has its whole storage zeroed first, a kilobyte and more.
inline KVRAcceptorCancellationAdviceResponse::KVRAcceptorCancellationAdviceResponse() = default;
