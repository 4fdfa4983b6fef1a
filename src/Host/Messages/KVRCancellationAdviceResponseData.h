#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRAuthorisationResponseData.h"
#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRHeader.h"

#include <memory>

struct TBXMLElement;

// The element classes of the cancellation advice response, read like those
// of the authorisation response: any child order, unknown children skipped,
// unknown codes as 0.

/// `Tx` of the response: the outcome of the cancellation.
class KVRTransactionDataCancellationResponse {
public:
    KVRResponseCode cancellationResponse = KVRResponseCodeDECL;  // Rspn
    std::shared_ptr<KVRTransactionIdentification> transactionId;  // TxId

    void read(const TBXMLElement* firstChild);
};

/// `Envt` of the response.
class KVRAcceptorCancellationAdviceResponseEnviroment {
public:
    std::shared_ptr<KVRGenericIdentification> merchant;  // Mrchnt

    void read(const TBXMLElement* firstChild);
};

/// `CxlAdvcRspn`.
class KVRCancellationAdviceResponseData {
public:
    std::shared_ptr<KVRAcceptorCancellationAdviceResponseEnviroment> enviroment;  // Envt
    std::shared_ptr<KVRTransactionDataCancellationResponse> transaction;          // Tx

    void read(const TBXMLElement* firstChild);
};

/// `AccptrCxlAdvcRspn`.
class KVRAcceptorCancellationAdviceResponseData {
public:
    std::shared_ptr<KVRHeader> header;                                           // Hdr
    std::shared_ptr<KVRCancellationAdviceResponseData> cancellationAdviceResponse;  // CxlAdvcRspn

    void read(const TBXMLElement* firstChild);
};
