#pragma once

#include "Host/Messages/KVRAuthorisationResponseData.h"

#include <memory>
#include <string>

/// The authoriser's reply. Reading never throws: a body that is not XML, or
/// that carries another message (a rejection, an error page), leaves `data`
/// null, and the sale treats any null link on its paths as a failed exchange.
class KVRAcceptorAuthorisationResponse {
public:
    std::shared_ptr<KVRAcceptorAuthorisationResponseData> data;  // AccptrAuthstnRspn

    void read(const std::string& body);
};
