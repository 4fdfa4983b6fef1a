#pragma once

#include "Host/Messages/KVRCancellationAdviceData.h"

#include <memory>
#include <string>

/// The cancellation advice document posted to void an approved sale.
class KVRAcceptorCancellationAdvice {
public:
    static constexpr const char* namespaceURI = "urn:AcceptorCancellationAdviceV02.1";

    std::shared_ptr<KVRAcceptorCancellationAdviceData> data;  // AccptrCxlAdvc

    /// The whole document: declaration, `Document` with its namespace, `data`.
    std::string write() const;
};
