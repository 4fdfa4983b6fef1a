#include "Host/Messages/KVRHostAddress.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

using KVRElementReading::named;
using KVRElementReading::text;

void KVRHostAddress::write(XMLWriter& writer) const {
    writer.writeStartElement("");
    writer.writeElementIfSet("PmryAdr", primaryAddress);
    if (primaryPortNumber != 0) writer.writeElement("PmryPortNb", std::to_string(primaryPortNumber));
    writer.writeElementIfSet("ScndryAdr", secundaryAddress);
    if (secundaryPortNumber != 0) writer.writeElement("ScndryPortNb", std::to_string(secundaryPortNumber));
    writer.writeElementIfSet("UsrNm", userName);
    writer.writeElementIfSet("AccsCd", accesCode);
    writer.writeEndElement();
}

void KVRHostAddress::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "PmryAdr")) {
            primaryAddress = text(e);
        } else if (named(e, "PmryPortNb")) {
            // Recognised, deliberately not converted.
        } else if (named(e, "ScndryAdr")) {
            secundaryAddress = text(e);
        } else if (named(e, "ScndryPortNb")) {
            // Recognised, deliberately not converted.
        } else if (named(e, "UsrNm")) {
            userName = text(e);
        } else if (named(e, "AccsCd")) {
            accesCode = text(e);
        }
    }
}
