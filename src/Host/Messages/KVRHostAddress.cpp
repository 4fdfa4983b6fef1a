#include "Host/Messages/KVRHostAddress.h"

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

#include <cstring>

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
        if (std::strcmp(e->name, "PmryAdr") == 0) {
            primaryAddress = e->text;
        } else if (std::strcmp(e->name, "PmryPortNb") == 0) {
            // Recognised, deliberately not converted.
        } else if (std::strcmp(e->name, "ScndryAdr") == 0) {
            secundaryAddress = e->text;
        } else if (std::strcmp(e->name, "ScndryPortNb") == 0) {
            // Recognised, deliberately not converted.
        } else if (std::strcmp(e->name, "UsrNm") == 0) {
            userName = e->text;
        } else if (std::strcmp(e->name, "AccsCd") == 0) {
            accesCode = e->text;
        }
    }
}
