#include "Tms/KVRRequestDataSet.h"

#include "Host/XMLWriter.h"
#include "Tms/KVRStatusReport.h"

void KVRRequestDataSet::write(XMLWriter& writer) const {
    writer.writeStartElement("DataSet");
    if (dataIdentification) dataIdentification->write(writer);
    writer.writeElementIfSet("SeqCntr", sequenceCounter);
    if (requestContent) requestContent->write(writer);
    writer.writeEndElement();
}

std::string KVRRequestDataSet::write() const {
    return KVRStatusReport::writeDocument([this](XMLWriter& writer) { write(writer); });
}
