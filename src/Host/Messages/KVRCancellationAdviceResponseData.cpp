#include "Host/Messages/KVRCancellationAdviceResponseData.h"

#include "Host/KVREnumParser.h"
#include "Host/Messages/KVRElementReading.h"

using KVRElementReading::named;
using KVRElementReading::readNested;
using KVRElementReading::text;

void KVRTransactionDataCancellationResponse::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Rspn")) cancellationResponse = KVREnumParser::parseEnumResponseCode(text(e));
        else if (named(e, "TxId")) readNested(transactionId, e);
    }
}

void KVRAcceptorCancellationAdviceResponseEnviroment::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Mrchnt")) readNested(merchant, e);
    }
}

void KVRCancellationAdviceResponseData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Envt")) readNested(enviroment, e);
        else if (named(e, "Tx")) readNested(transaction, e);
    }
}

void KVRAcceptorCancellationAdviceResponseData::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Hdr")) readNested(header, e);
        else if (named(e, "CxlAdvcRspn")) readNested(cancellationAdviceResponse, e);
    }
}
