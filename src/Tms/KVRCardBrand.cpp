#include "Tms/KVRCardBrand.h"

#include "Host/XMLWriter.h"

void KVRCardBrand::write(XMLWriter& writer) const {
    writer.writeStartElement("CrdBrdTbl");
    writer.writeElement("Id", std::to_string(identification));
    writer.writeElementIfSet("Description", brandDescription);
    writer.writeElement("BrandType", std::to_string(brandType));
    writer.writeEndElement();
}
