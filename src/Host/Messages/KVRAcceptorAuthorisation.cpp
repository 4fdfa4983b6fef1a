#include "Host/Messages/KVRAcceptorAuthorisation.h"

#include "Host/XMLWriter.h"

std::string KVRAcceptorAuthorisation::write() const {
    XMLWriter writer;
    writer.setDefaultNamespace(namespaceURI);
    writer.writeStartDocumentWithEncodingAndVersion("UTF-8", "1.0");
    writer.writeStartElementWithNamespace(namespaceURI, "Document");
    write(writer);
    writer.writeEndElement();
    return writer.toString();
}

void KVRAcceptorAuthorisation::write(XMLWriter& writer) const {
    writer.writeStartElement("AccptrAuthstnReq");
    if (authorisationRequest) authorisationRequest->write(writer);
    if (header) header->write(writer);
    writer.writeEndElement();
}
