#include "Host/Messages/KVRAuthorisationResponseData.h"

#include "Host/KVREnumParser.h"
#include "Host/Messages/KVRElementReading.h"

using KVRElementReading::named;
using KVRElementReading::readNested;
using KVRElementReading::text;

void KVRMessageToPresentData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "MsgDstn")) messageDestination = KVREnumParser::parseEnumUserInterfaceCode(text(e));
        else if (named(e, "MsgCntt")) messageContent = text(e);
    }
}

void KVRAction::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "ActnTp")) actionType = KVREnumParser::parseEnumActionTypeCode(text(e));
        else if (named(e, "MsgToPres")) readNested(messageToPresent, e);
    }
}

void KVRResponseToAuthorisationData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Rspn")) responseCode = KVREnumParser::parseEnumResponseCode(text(e));
        else if (named(e, "RspnRsn")) responseReason = text(e);
    }
}

void KVRAuthorisationResultData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "AuthstnCd")) authorisationCode = text(e);
        else if (named(e, "CmpltnReqrd")) completionRequired = text(e);
        else if (named(e, "RspnToAuthstn")) readNested(responseToAuthorisation, e);
    }
}

void KVRTransactionResponseData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Actn")) readNested(action, e);
        else if (named(e, "AuthstnRslt")) readNested(authorisationResult, e);
    }
}

void KVRTransactionIdentification::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "TxDtTm")) transactionDateTime = text(e);
        else if (named(e, "TxRef")) transactionReference = text(e);
    }
}

void KVRDetailedAmount::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "AmtTp")) amountType = KVREnumParser::parseEnumAmountType(text(e));
        else if (named(e, "Val")) value = text(e);
        else if (named(e, "Labl")) label = text(e);
    }
}

void KVRTransactionDetails::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "AcctTp")) accountType = KVREnumParser::parseEnumAccountType(text(e));
        else if (named(e, "Ccy")) currency = text(e);
        else if (named(e, "DtldAmt")) readNested(detailedAmount, e);
        else if (named(e, "ICCRltdData")) iccRelatedData = text(e);
        else if (named(e, "TtlAmt")) totalAmount = text(e);
        else if (named(e, "VldtyDt")) validityDate = text(e);
    }
}

void KVRTransactionDataResponse::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "RcptTxId")) recipientTransactionId = text(e);
        else if (named(e, "TxDtls")) readNested(transactionDetails, e);
        else if (named(e, "TxId")) readNested(transactionId, e);
    }
}

void KVREnvironment::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "MrchntId")) readNested(merchantIdentification, e);
        else if (named(e, "POIId")) readNested(poiIdentification, e);
    }
}

void KVRAuthorisationResponseData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Envt")) readNested(environment, e);
        else if (named(e, "Tx")) readNested(transaction, e);
        else if (named(e, "TxRspn")) readNested(transactionResponse, e);
    }
}

void KVRAcceptorAuthorisationResponseData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "AuthstnRspn")) readNested(authorisationResponse, e);
        else if (named(e, "Hdr")) readNested(header, e);
    }
}
