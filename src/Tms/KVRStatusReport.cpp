#include "Tms/KVRStatusReport.h"

#include "Host/XMLWriter.h"

void KVRStatusReportContent::write(XMLWriter& writer) const {
    writer.writeStartElement("StsRpt");
    if (poiIdentification) poiIdentification->write(writer);
    for (const auto& dataSet : listDataSet)
        if (dataSet) dataSet->write(writer);
    writer.writeEndElement();
}

void KVRStatusReportData::write(XMLWriter& writer) const {
    writer.writeStartElement("StsRpt");
    if (header) header->write(writer);
    if (statusReport) statusReport->write(writer);
    if (securityTrailer) securityTrailer->write(writer);
    writer.writeEndElement();
}

std::string KVRStatusReport::write() const {
    return writeDocument([this](XMLWriter& writer) {
        if (data) data->write(writer);
    });
}

std::string KVRStatusReport::writeDocument(const std::function<void(XMLWriter&)>& body) {
    XMLWriter writer;
    writer.setDefaultNamespace(namespaceURI);
    writer.writeStartDocumentWithEncodingAndVersion("UTF-8", "1.0");
    writer.writeStartElementWithNamespace(namespaceURI, "Document");
    body(writer);
    writer.writeEndElement();
    return writer.toString();
}
