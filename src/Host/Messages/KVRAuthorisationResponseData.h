#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRHeader.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct TBXMLElement;

// The element classes of the acceptor authorisation response. Each read()
// takes the first child of its element and walks the siblings: children may
// come in any order, unknown ones are skipped, a missing one leaves its field
// unset (null, or 0 for a code), an unknown code reads as 0.

/// `MsgToPres`.
class KVRMessageToPresentData {
public:
    KVRUserInterface messageDestination = KVRUserInterfaceCDSP;  // MsgDstn
    std::optional<std::string> messageContent;                  // MsgCntt

    void read(const TBXMLElement* firstChild);
};

/// `Actn`.
class KVRAction {
public:
    KVRActionType actionType = KVRActionTypeBUSY;  // ActnTp
    std::shared_ptr<KVRMessageToPresentData> messageToPresent;

    void read(const TBXMLElement* firstChild);
};

/// `RspnToAuthstn`: the host's decision.
class KVRResponseToAuthorisationData {
public:
    KVRResponseCode responseCode = KVRResponseCodeDECL;  // Rspn
    std::optional<std::string> responseReason;          // RspnRsn
    /// Not carried by the message; left for the caller.
    int32_t status = 0;

    void read(const TBXMLElement* firstChild);
};

/// `AuthstnRslt`.
class KVRAuthorisationResultData {
public:
    std::optional<std::string> authorisationCode;   // AuthstnCd
    std::optional<std::string> completionRequired;  // CmpltnReqrd
    std::shared_ptr<KVRResponseToAuthorisationData> responseToAuthorisation;

    void read(const TBXMLElement* firstChild);
};

/// `TxRspn`.
class KVRTransactionResponseData {
public:
    std::shared_ptr<KVRAction> action;
    std::shared_ptr<KVRAuthorisationResultData> authorisationResult;

    void read(const TBXMLElement* firstChild);
};

/// `TxId` of a response (authorisation and cancellation alike).
class KVRTransactionIdentification {
public:
    std::optional<std::string> transactionDateTime;   // TxDtTm
    std::optional<std::string> transactionReference;  // TxRef

    void read(const TBXMLElement* firstChild);
};

/// `DtldAmt`.
class KVRDetailedAmount {
public:
    KVRAmountType amountType = KVRAmountTypeCSHB;  // AmtTp
    std::optional<std::string> value;             // Val
    std::optional<std::string> label;             // Labl

    void read(const TBXMLElement* firstChild);
};

/// `TxDtls` of the response. Amounts and currency are kept as their text.
class KVRTransactionDetails {
public:
    KVRAccountType accountType = KVRAccountTypeDFLT;  // AcctTp
    std::optional<std::string> currency;             // Ccy
    std::shared_ptr<KVRDetailedAmount> detailedAmount;
    std::optional<std::string> iccRelatedData;  // ICCRltdData, the issuer's chip data for the card
    std::optional<std::string> totalAmount;     // TtlAmt
    std::optional<std::string> validityDate;    // VldtyDt

    void read(const TBXMLElement* firstChild);
};

/// `Tx` of the response.
class KVRTransactionDataResponse {
public:
    std::optional<std::string> recipientTransactionId;  // RcptTxId, the acquirer's key for the sale
    std::shared_ptr<KVRTransactionDetails> transactionDetails;
    std::shared_ptr<KVRTransactionIdentification> transactionId;

    void read(const TBXMLElement* firstChild);
};

/// `Envt` of the response.
class KVREnvironment {
public:
    std::shared_ptr<KVRGenericIdentification> merchantIdentification;  // MrchntId
    std::shared_ptr<KVRGenericIdentification> poiIdentification;       // POIId

    void read(const TBXMLElement* firstChild);
};

/// `AuthstnRspn`.
class KVRAuthorisationResponseData {
public:
    std::shared_ptr<KVREnvironment> environment;
    std::shared_ptr<KVRTransactionDataResponse> transaction;
    std::shared_ptr<KVRTransactionResponseData> transactionResponse;

    void read(const TBXMLElement* firstChild);
};

/// `AccptrAuthstnRspn`.
class KVRAcceptorAuthorisationResponseData {
public:
    std::shared_ptr<KVRAuthorisationResponseData> authorisationResponse;
    std::shared_ptr<KVRHeader> header;

    void read(const TBXMLElement* firstChild);
};
