#include "Tms/KVRRequestContent.h"

#include "Host/XMLWriter.h"

void KVRDataSetRequired::write(XMLWriter& writer) const {
    writer.writeStartElement("DataSetReqrd");
    if (identification) identification->write(writer);
    writer.writeEndElement();
}

void KVRRequestContent::write(XMLWriter& writer) const {
    writer.writeStartElement("Cntt");
    if (poiComponent) poiComponent->write(writer);
    if (poiComponentTerm) poiComponentTerm->write(writer);
    if (dataSetRequired) dataSetRequired->write(writer);
    writer.writeElementIfSet("Errs", errors);
    if (event) event->write(writer);
    writer.writeEndElement();
}
