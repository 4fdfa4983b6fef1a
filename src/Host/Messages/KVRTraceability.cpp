#include "Host/Messages/KVRTraceability.h"

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

#include <cstring>

void KVRTraceability::write(XMLWriter& writer) const {
    writer.writeStartElement("Tracblt");
    if (relayIdentification) relayIdentification->write(writer, "RlayId");
    writer.writeElementIfSet("TracDtTmIn", traceDateTimeIn);
    writer.writeElementIfSet("TracDtTmOut", traceDateTimeOut);
    writer.writeEndElement();
}

void KVRTraceability::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "RlayId") == 0) {
            relayIdentification = std::make_shared<KVRGenericIdentification>();
            relayIdentification->read(e->firstChild);
        } else if (std::strcmp(e->name, "TracDtTmIn") == 0) {
            traceDateTimeIn = e->text;
        } else if (std::strcmp(e->name, "TracDtTmOut") == 0) {
            traceDateTimeOut = e->text;
        }
    }
}
