#pragma once

#include "Host/Messages/KVRAuthorisationResponseData.h"

#include <optional>
#include <string>

/// The authoriser's reply. Reading never throws: a body that is not XML, or
/// that carries another message (a rejection, an error page), leaves `data`
/// empty, and the sale treats any empty link on its paths as a failed exchange.
class KVRAcceptorAuthorisationResponse {
public:
    KVRAcceptorAuthorisationResponse();

    std::optional<KVRAcceptorAuthorisationResponseData> data;  // AccptrAuthstnRspn

    void read(const std::string& body);
};

// Written by hand, the constructor leaves the empty optional as it is; the
// implicit one has its whole storage zeroed first, a kilobyte and more.
inline KVRAcceptorAuthorisationResponse::KVRAcceptorAuthorisationResponse() = default;
