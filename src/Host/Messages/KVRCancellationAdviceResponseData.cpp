#include "Host/Messages/KVRCancellationAdviceResponseData.h"

#include "Host/KVREnumParser.h"
#include "Host/Messages/KVRElementReading.h"

using KVRElementReading::named;
using KVRElementReading::nested;

void KVRTransactionDataCancellationResponse::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Rspn")) cancellationResponse = KVREnumParser::parseEnumResponseCode(e->text);
        else if (named(e, "TxId")) transactionId = nested<KVRTransactionIdentification>(e);
    }
}

void KVRAcceptorCancellationAdviceResponseEnviroment::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Mrchnt")) merchant = nested<KVRGenericIdentification>(e);
    }
}

void KVRCancellationAdviceResponseData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Envt")) enviroment = nested<KVRAcceptorCancellationAdviceResponseEnviroment>(e);
        else if (named(e, "Tx")) transaction = nested<KVRTransactionDataCancellationResponse>(e);
    }
}

void KVRAcceptorCancellationAdviceResponseData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Hdr")) header = nested<KVRHeader>(e);
        else if (named(e, "CxlAdvcRspn")) cancellationAdviceResponse = nested<KVRCancellationAdviceResponseData>(e);
    }
}
