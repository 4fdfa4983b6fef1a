#include "Host/Messages/KVRGenericIdentification.h"

#include "Host/KVREnumParser.h"
#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

using KVRElementReading::named;
using KVRElementReading::text;

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
        if (named(e, "Id")) {
            identification = text(e);
        } else if (named(e, "Tp")) {
            initiatingPartyType = KVREnumParser::stringToInitiatingPartyType(text(e));
        } else if (named(e, "Issr")) {
            initiatingPartyIssuer = KVREnumParser::stringToInitiatingPartyIssuer(text(e));
        } else if (named(e, "ShrtNm")) {
            shortName = text(e);
        }
    }
}
