#include "Host/Messages/KVRAuthorisationRequestData.h"

#include "Host/KVREnumParser.h"
#include "Host/XMLWriter.h"

#include <string>

namespace {

template <class Element>
void writeIfSet(XMLWriter& writer, const std::shared_ptr<Element>& element) {
    if (element) element->write(writer);
}

void writeNumber(XMLWriter& writer, const char* tag, int32_t value) { writer.writeElement(tag, std::to_string(value)); }

}  // namespace

void KVRTrackData::write(XMLWriter& writer) const {
    writer.writeStartElement("TrckData");
    writeNumber(writer, "TrckNb", trackNumber);
    writer.writeElementIfSet("TrckVal", trackValue);
    writer.writeEndElement();
}

void KVRCardSecurityCodeData::write(XMLWriter& writer) const {
    writer.writeStartElement("CardSctyCd");
    writer.writeElementIfSet("CSCVal", cardSecurityCodeValue);
    writer.writeEndElement();
}

void KVRPlainCardData::write(XMLWriter& writer) const {
    writer.writeStartElement("PlainCardData");
    writer.writeElementIfSet("XpryDt", expiryDate);
    writer.writeElementIfSet("PAN", pan);
    writer.writeElementIfSet("CardSeqNb", cardSequenceNumber);
    for (const auto& track : trackData) writeIfSet(writer, track);
    writeIfSet(writer, cardSecurityCode);
    writer.writeEndElement();
}

void KVRCardData::write(XMLWriter& writer) const {
    writer.writeStartElement("Card");
    writeIfSet(writer, plainCard);
    writer.writeEndElement();
}

void KVRKekIdentificationData::write(XMLWriter& writer) const {
    writer.writeStartElement("KEKId");
    writer.writeElementIfSet("DerivtnId", derivationIdentification);
    writer.writeEndElement();
}

void KVRKekData::write(XMLWriter& writer) const {
    writer.writeStartElement("KEK");
    writer.writeElementIfSet("NcrptdKey", encryptedKey);
    writeIfSet(writer, kekId);
    writer.writeEndElement();
}

void KVRRecipientData::write(XMLWriter& writer) const {
    writer.writeStartElement("Rcpt");
    writeIfSet(writer, kek);
    writer.writeEndElement();
}

void KVREncryptedContentData::write(XMLWriter& writer) const {
    writer.writeStartElement("NcrptdCntt");
    writer.writeElementIfSet("NcrptdData", encryptedData);
    writer.writeEndElement();
}

void KVREnvelopedData::write(XMLWriter& writer) const {
    writer.writeStartElement("EnvlpdData");
    writeIfSet(writer, recipient);
    writeIfSet(writer, encryptedContent);
    writer.writeEndElement();
}

void KVREncryptedPINBlockData::write(XMLWriter& writer) const {
    writer.writeStartElement("NcrptdPINBlck");
    writeIfSet(writer, envelopedData);
    writer.writeElement("CnttTp", KVREnumParser::contentTypeToString(contentType));
    writer.writeEndElement();
}

void KVRCardholderOnLinePinData::write(XMLWriter& writer) const {
    writer.writeStartElement("CrdhldrOnLinePIN");
    writeIfSet(writer, encryptedPinBlock);
    writer.writeEndElement();
}

void KVRAuthenticationData::write(XMLWriter& writer) const {
    writer.writeStartElement("Authntcn");
    writeIfSet(writer, cardholderOnLinePin);
    writer.writeElement("AuthntcnMtd", KVREnumParser::authenticationTypeToString(authenticationMethod));
    writer.writeEndElement();
}

void KVRCardholderIdentificationData::write(XMLWriter& writer) const {
    writer.writeStartElement("Crdhldr");
    writeIfSet(writer, authentication);
    if (cardholderIdentification) {
        writer.writeElement("CrdhldrIdVal", *cardholderIdentification);
        writer.writeElement("CrdhldrIdTp", KVREnumParser::cardholderIdentificationTypeToString(cardholderIdentificationType));
    }
    writer.writeEndElement();
}

void KVRMerchantData::write(XMLWriter& writer) const {
    writer.writeStartElement("Mrchnt");
    if (genericId) genericId->write(writer, "Id");
    writer.writeEndElement();
}

void KVRPoiData::write(XMLWriter& writer) const {
    writer.writeStartElement("POI");
    writer.writeElementIfSet("SysNm", systemName);
    writer.writeEndElement();
}

void KVREnviroment::write(XMLWriter& writer) const {
    writer.writeStartElement("Envt");
    writeIfSet(writer, merchant);
    writeIfSet(writer, card);
    writeIfSet(writer, cardholderIdentification);
    writeIfSet(writer, poi);
    writer.writeEndElement();
}

void KVRPaymentContextData::write(XMLWriter& writer) const {
    writer.writeStartElement("PmtCntxt");
    writer.writeElement("CardDataNtryMd", KVREnumParser::poiCardDataReadingCodeTypeToString(cardDataEntryMode));
    writer.writeEndElement();
}

void KVRSaleContextData::write(XMLWriter& writer) const {
    writer.writeElementIfSet("SaleId", saleId);
    writer.writeElementIfSet("SaleRefNb", saleReferenceNumber);
}

void KVRContextData::write(XMLWriter& writer) const {
    writer.writeStartElement("Cntxt");
    writeIfSet(writer, paymentContext);
    writeIfSet(writer, saleContext);
    writer.writeEndElement();
}

void KVRTransactionIdentificationData::write(XMLWriter& writer) const {
    writer.writeStartElement("TxId");
    writer.writeElementIfSet("TxDtTm", transactionDateTime);
    writer.writeElementIfSet("TxRef", transactionReference);
    writer.writeEndElement();
}

void KVRRecurringTransactionData::write(XMLWriter& writer) const {
    writer.writeStartElement("RcrngTx");
    writer.writeElement("InstlmtTp", KVREnumParser::instalmentTypeToString(instalmentType));
    writeNumber(writer, "TtlNbOfPmts", totalNumberOfPayments);
    writer.writeEndElement();
}

void KVRProductData::write(XMLWriter& writer) const {
    writer.writeStartElement("Pdct");
    writer.writeElementIfSet("PdctCd", productCode);
    writer.writeElementIfSet("UnitOfMeasr", unitOfMeasure);
    writeNumber(writer, "PdctQty", productQuantity);
    writeNumber(writer, "UnitPric", unitPrice);
    writeNumber(writer, "PdctAmt", productAmount);
    writer.writeElementIfSet("TaxTp", taxType);
    writer.writeElementIfSet("AddtlPdctInf", additionalProductInformation);
    writer.writeEndElement();
}

void KVRTransactionDetailsData::write(XMLWriter& writer) const {
    writer.writeStartElement("TxDtls");
    writeNumber(writer, "Ccy", currency);
    writer.writeElementIfSet("TtlAmt", totalAmount);
    writer.writeElement("AcctTp", KVREnumParser::accountTypeToString(accountType));
    writeIfSet(writer, recurringTransaction);
    writeIfSet(writer, product);
    writer.writeElementIfSet("ICCRltdData", iccRelatedData);
    writer.writeEndElement();
}

void KVRTransactionDataRequest::write(XMLWriter& writer) const {
    writer.writeStartElement("Tx");
    writer.writeElement("TxCaptr", transactionCapture ? "true" : "false");
    writer.writeElementIfSet("MrchntCtgyCd", merchantCategoryCode);
    writeIfSet(writer, transactionIdentification);
    writeIfSet(writer, transactionDetails);
    writer.writeElementIfSet("AddtlTxData", additionalTransactionData);
    writer.writeElementIfSet("InitrTxId", initrTxId);
    writer.writeEndElement();
}

void KVRAuthorisationRequestData::write(XMLWriter& writer) const {
    writer.writeStartElement("AuthstnReq");
    writeIfSet(writer, environment);
    writeIfSet(writer, context);
    writeIfSet(writer, transaction);
    writer.writeEndElement();
}
