#include "Host/Messages/KVRTraceability.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

using KVRElementReading::named;
using KVRElementReading::text;
using KVRElementReading::readNested;

void KVRTraceability::write(XMLWriter& writer) const {
    writer.writeStartElement("Tracblt");
    if (relayIdentification) relayIdentification->write(writer, "RlayId");
    writer.writeElementIfSet("TracDtTmIn", traceDateTimeIn);
    writer.writeElementIfSet("TracDtTmOut", traceDateTimeOut);
    writer.writeEndElement();
}

void KVRTraceability::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "RlayId")) {
            readNested(relayIdentification, e);
        } else if (named(e, "TracDtTmIn")) {
            traceDateTimeIn = text(e);
        } else if (named(e, "TracDtTmOut")) {
            traceDateTimeOut = text(e);
        }
    }
}
