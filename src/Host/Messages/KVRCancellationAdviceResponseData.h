#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRAuthorisationResponseData.h"
#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRHeader.h"

#include <optional>

struct TBXMLElement;

// The element classes of the cancellation advice response, read like those
// of the authorisation response: any child order, unknown children skipped,
// unknown codes as 0, nested elements held by value.

/// `Tx` of the response: the outcome of the cancellation.
class KVRTransactionDataCancellationResponse {
public:
    KVRTransactionDataCancellationResponse();

    KVRResponseCode cancellationResponse = KVRResponseCodeDECL;  // Rspn
    std::optional<KVRTransactionIdentification> transactionId;  // TxId

    void read(const TBXMLElement* firstChild);
};

/// `Envt` of the response.
class KVRAcceptorCancellationAdviceResponseEnviroment {
public:
    KVRAcceptorCancellationAdviceResponseEnviroment();

    std::optional<KVRGenericIdentification> merchant;  // Mrchnt

    void read(const TBXMLElement* firstChild);
};

/// `CxlAdvcRspn`.
class KVRCancellationAdviceResponseData {
public:
    KVRCancellationAdviceResponseData();

    std::optional<KVRAcceptorCancellationAdviceResponseEnviroment> enviroment;  // Envt
    std::optional<KVRTransactionDataCancellationResponse> transaction;          // Tx

    void read(const TBXMLElement* firstChild);
};

/// `AccptrCxlAdvcRspn`.
class KVRAcceptorCancellationAdviceResponseData {
public:
    KVRAcceptorCancellationAdviceResponseData();

    std::optional<KVRHeader> header;                                           // Hdr
    std::optional<KVRCancellationAdviceResponseData> cancellationAdviceResponse;  // CxlAdvcRspn

    void read(const TBXMLElement* firstChild);
};

// As for the authorisation response: made in place without being zeroed first.
inline KVRTransactionDataCancellationResponse::KVRTransactionDataCancellationResponse() = default;
inline KVRAcceptorCancellationAdviceResponseEnviroment::KVRAcceptorCancellationAdviceResponseEnviroment() = default;
inline KVRCancellationAdviceResponseData::KVRCancellationAdviceResponseData() = default;
inline KVRAcceptorCancellationAdviceResponseData::KVRAcceptorCancellationAdviceResponseData() = default;
