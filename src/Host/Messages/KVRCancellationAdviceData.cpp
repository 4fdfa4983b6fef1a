#include "Host/Messages/KVRCancellationAdviceData.h"

#include "Host/XMLWriter.h"

#include <string>

namespace {

template <class Element>
void writeIfSet(XMLWriter& writer, const std::shared_ptr<Element>& element) {
    if (element) element->write(writer);
}

}  // namespace

void KVRCancelTransactionIdentificationData::write(XMLWriter& writer) const {
    writer.writeStartElement("TxId");
    writer.writeElementIfSet("TxRef", transactionReference);
    writer.writeElementIfSet("TxDtTm", transactionDateTime);
    writer.writeEndElement();
}

void KVRCancelTransactionDetailsData::write(XMLWriter& writer) const {
    writer.writeStartElement("TxDtls");
    writer.writeElement("Ccy", std::to_string(currency));
    writer.writeElementIfSet("TtlAmt", totalAmount);
    writer.writeEndElement();
}

void KVROriginalTransactionData::write(XMLWriter& writer) const {
    writer.writeStartElement("OrgnlTx");
    writer.writeElementIfSet("RcptTxId", recipientTransactionIdentification);
    writer.writeElementIfSet("InitrTxId", initrTxId);
    writer.writeEndElement();
}

void KVRTransactionData::write(XMLWriter& writer) const {
    writer.writeStartElement("Tx");
    writeIfSet(writer, originalTransaction);
    writeIfSet(writer, transactionDetails);
    writeIfSet(writer, transactionIndentification);
    writer.writeEndElement();
}

void KVRCancelMerchantData::write(XMLWriter& writer) const {
    writer.writeStartElement("Mrchnt");
    if (genericId) genericId->write(writer, "Id");
    writer.writeEndElement();
}

void KVREnviromentData::write(XMLWriter& writer) const {
    writer.writeStartElement("Envt");
    writeIfSet(writer, merchant);
    writer.writeEndElement();
}

void KVRCancellationAdviceData::write(XMLWriter& writer) const {
    writer.writeStartElement("CxlAdvc");
    writeIfSet(writer, enviroment);
    writeIfSet(writer, transaction);
    writer.writeEndElement();
}

void KVRAcceptorCancellationAdviceData::write(XMLWriter& writer) const {
    writer.writeStartElement("AccptrCxlAdvc");
    writeIfSet(writer, cancellationAdviceData);
    writeIfSet(writer, header);
    writer.writeEndElement();
}
