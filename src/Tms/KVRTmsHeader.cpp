#include "Tms/KVRTmsHeader.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

using KVRElementReading::named;
using KVRElementReading::text;

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
        if (named(e, "DwnldTrf")) {
            downloadTransfer = e->text[0] != '\0';
        } else if (named(e, "FrmtVrsn")) {
            formatVersion = text(e);
        } else if (named(e, "XchgId")) {
            exchangeIdentification = text(e);
        } else if (named(e, "CreDtTm")) {
            creationDateTime = text(e);
        }
    }
}
