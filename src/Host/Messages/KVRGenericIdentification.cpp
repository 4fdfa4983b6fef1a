#include "Host/Messages/KVRGenericIdentification.h"

#include "Host/KVREnumParser.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

#include <cstring>

void KVRGenericIdentification::write(XMLWriter& writer, const std::string& tag) const {
    writer.writeStartElement(tag);
    writer.writeElementIfSet("Id", identification);
    writer.writeElement("Tp", KVREnumParser::initiatingPartyTypeToString(initiatingPartyType));
    writer.writeElement("Issr", KVREnumParser::initiatingPartyIssuerToString(initiatingPartyIssuer));
    writer.writeElementIfSet("ShrtNm", shortName);
    writer.writeEndElement();
}

void KVRGenericIdentification::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "Id") == 0) {
            identification = e->text;
        } else if (std::strcmp(e->name, "Tp") == 0) {
            initiatingPartyType = KVREnumParser::stringToInitiatingPartyType(e->text);
        } else if (std::strcmp(e->name, "Issr") == 0) {
            initiatingPartyIssuer = KVREnumParser::stringToInitiatingPartyIssuer(e->text);
        } else if (std::strcmp(e->name, "ShrtNm") == 0) {
            shortName = e->text;
        }
    }
}
