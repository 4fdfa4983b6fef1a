#include "Host/Messages/KVRAcceptorCancellationAdvice.h"

#include "Host/XMLWriter.h"

std::string KVRAcceptorCancellationAdvice::write() const {
    XMLWriter writer;
    writer.setDefaultNamespace(namespaceURI);
    writer.writeStartDocumentWithEncodingAndVersion("UTF-8", "1.0");
    writer.writeStartElementWithNamespace(namespaceURI, "Document");
    if (data) data->write(writer);
    writer.writeEndElement();
    return writer.toString();
}
