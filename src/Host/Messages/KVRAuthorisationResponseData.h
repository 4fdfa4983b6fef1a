#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRHeader.h"
#include "Host/Messages/KVRText.h"

#include <cstdint>
#include <optional>
#include <string>

struct TBXMLElement;

// The element classes of the acceptor authorisation response. Each read()
// takes the first child of its element and walks the siblings: children may
// come in any order, unknown ones are skipped, a missing one leaves its field
// unset (empty, or 0 for a code), an unknown code reads as 0. Nested elements
// are held by value: a reply is read on every sale, and one heap object per
// element cost more than building the tree itself.

/// `MsgToPres`.
class KVRMessageToPresentData {
public:
    KVRMessageToPresentData();

    KVRUserInterface messageDestination = KVRUserInterfaceCDSP;  // MsgDstn
    std::optional<KVRText> messageContent;                      // MsgCntt

    void read(const TBXMLElement* firstChild);
};

/// `Actn`.
class KVRAction {
public:
    KVRAction();

    KVRActionType actionType = KVRActionTypeBUSY;  // ActnTp
    std::optional<KVRMessageToPresentData> messageToPresent;

    void read(const TBXMLElement* firstChild);
};

/// `RspnToAuthstn`: the host's decision.
class KVRResponseToAuthorisationData {
public:
    KVRResponseToAuthorisationData();

    KVRResponseCode responseCode = KVRResponseCodeDECL;  // Rspn
    std::optional<KVRText> responseReason;              // RspnRsn
    /// Not carried by the message; left for the caller.
    int32_t status = 0;

    void read(const TBXMLElement* firstChild);
};

/// `AuthstnRslt`.
class KVRAuthorisationResultData {
public:
    KVRAuthorisationResultData();

    std::optional<KVRText> authorisationCode;   // AuthstnCd
    std::optional<KVRText> completionRequired;  // CmpltnReqrd
    std::optional<KVRResponseToAuthorisationData> responseToAuthorisation;

    void read(const TBXMLElement* firstChild);
};

/// `TxRspn`.
class KVRTransactionResponseData {
public:
    KVRTransactionResponseData();

    std::optional<KVRAction> action;
    std::optional<KVRAuthorisationResultData> authorisationResult;

    void read(const TBXMLElement* firstChild);
};

/// `TxId` of a response (authorisation and cancellation alike).
class KVRTransactionIdentification {
public:
    KVRTransactionIdentification();

    std::optional<KVRText> transactionDateTime;   // TxDtTm
    std::optional<KVRText> transactionReference;  // TxRef

    void read(const TBXMLElement* firstChild);
};

/// `DtldAmt`.
class KVRDetailedAmount {
public:
    KVRDetailedAmount();

    KVRAmountType amountType = KVRAmountTypeCSHB;  // AmtTp
    std::optional<KVRText> value;                 // Val
    std::optional<KVRText> label;                 // Labl

    void read(const TBXMLElement* firstChild);
};

/// `TxDtls` of the response. Amounts and currency are kept as their text.
class KVRTransactionDetails {
public:
    KVRTransactionDetails();

    KVRAccountType accountType = KVRAccountTypeDFLT;  // AcctTp
    std::optional<KVRText> currency;                 // Ccy
    std::optional<KVRDetailedAmount> detailedAmount;
    std::optional<KVRText> iccRelatedData;  // ICCRltdData, the issuer's chip data for the card
    std::optional<KVRText> totalAmount;     // TtlAmt
    std::optional<KVRText> validityDate;    // VldtyDt

    void read(const TBXMLElement* firstChild);
};

/// `Tx` of the response.
class KVRTransactionDataResponse {
public:
    KVRTransactionDataResponse();

    std::optional<KVRText> recipientTransactionId;  // RcptTxId, the acquirer's key for the sale
    std::optional<KVRTransactionDetails> transactionDetails;
    std::optional<KVRTransactionIdentification> transactionId;

    void read(const TBXMLElement* firstChild);
};

/// `Envt` of the response.
class KVREnvironment {
public:
    KVREnvironment();

    std::optional<KVRGenericIdentification> merchantIdentification;  // MrchntId
    std::optional<KVRGenericIdentification> poiIdentification;       // POIId

    void read(const TBXMLElement* firstChild);
};

/// `AuthstnRspn`.
class KVRAuthorisationResponseData {
public:
    KVRAuthorisationResponseData();

    std::optional<KVREnvironment> environment;
    std::optional<KVRTransactionDataResponse> transaction;
    std::optional<KVRTransactionResponseData> transactionResponse;

    void read(const TBXMLElement* firstChild);
};

/// `AccptrAuthstnRspn`.
class KVRAcceptorAuthorisationResponseData {
public:
    KVRAcceptorAuthorisationResponseData();

    std::optional<KVRAuthorisationResponseData> authorisationResponse;
    std::optional<KVRHeader> header;

    void read(const TBXMLElement* firstChild);
};

// Defaulted here, outside their classes, the constructors count as written
// by hand: an element made in place in its optional is then only constructed,
// not first zeroed whole.
inline KVRMessageToPresentData::KVRMessageToPresentData() = default;
inline KVRAction::KVRAction() = default;
inline KVRResponseToAuthorisationData::KVRResponseToAuthorisationData() = default;
inline KVRAuthorisationResultData::KVRAuthorisationResultData() = default;
inline KVRTransactionResponseData::KVRTransactionResponseData() = default;
inline KVRTransactionIdentification::KVRTransactionIdentification() = default;
inline KVRDetailedAmount::KVRDetailedAmount() = default;
inline KVRTransactionDetails::KVRTransactionDetails() = default;
inline KVRTransactionDataResponse::KVRTransactionDataResponse() = default;
inline KVREnvironment::KVREnvironment() = default;
inline KVRAuthorisationResponseData::KVRAuthorisationResponseData() = default;
inline KVRAcceptorAuthorisationResponseData::KVRAcceptorAuthorisationResponseData() = default;
