#include "Tms/KVRTmsHeader.h"

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

#include <cstring>

void KVRTmsHeader::write(XMLWriter& writer) const {
    writer.writeStartElement("Hdr");
    writer.writeElement("DwnldTrf", downloadTransfer ? "true" : "false");
    writer.writeElementIfSet("FrmtVrsn", formatVersion);
    writer.writeElementIfSet("XchgId", exchangeIdentification);
    writer.writeElementIfSet("CreDtTm", creationDateTime);
    writer.writeEndElement();
}

void KVRTmsHeader::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "DwnldTrf") == 0) {
            downloadTransfer = e->text[0] != '\0';
        } else if (std::strcmp(e->name, "FrmtVrsn") == 0) {
            formatVersion = e->text;
        } else if (std::strcmp(e->name, "XchgId") == 0) {
            exchangeIdentification = e->text;
        } else if (std::strcmp(e->name, "CreDtTm") == 0) {
            creationDateTime = e->text;
        }
    }
}
