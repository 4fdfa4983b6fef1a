#include "Tms/KVRBinRange.h"

#include "Host/XMLWriter.h"

void KVRBinRange::write(XMLWriter& writer) const {
    writer.writeStartElement("BinRng");
    writer.writeElement("MaxRange", std::to_string(maxRange));
    writer.writeElement("MinRange", std::to_string(minRange));
    writer.writeElement("TefBrandId", std::to_string(tefBrandId));
    writer.writeEndElement();
}
