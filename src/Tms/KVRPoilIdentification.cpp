#include "Tms/KVRPoilIdentification.h"

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Tms/KVRTmsCodeTable.h"

#include <cstring>

namespace {
const KVRTmsCodeTable& partyTypes() {
    static const KVRTmsCodeTable table(0, {"ACCP", "OPOI", "MERC", "ACQR", "ITAG", "MTMG", "TMGT"}, nullptr);
    return table;
}

// A number with no code still gives its element, empty.
void writePartyType(XMLWriter& writer, const char* tag, KVRPartyType value) {
    if (value == 0) return;
    writer.writeStartElement(tag);
    if (auto code = KVRPoilIdentification::serializePartyTypeCodeToString(value)) writer.writeCharacters(*code);
    writer.writeEndElement();
}
}  // namespace

std::optional<std::string> KVRPoilIdentification::serializePartyTypeCodeToString(uint32_t value) {
    return partyTypes().code(value);
}

KVRPartyType KVRPoilIdentification::PartyTypeCodeToString(const char* code) {
    return static_cast<KVRPartyType>(partyTypes().value(code));
}

void KVRPoilIdentification::write(XMLWriter& writer) const {
    writer.writeStartElement("POIId");
    writePartyType(writer, "Tp", type);
    writePartyType(writer, "Issr", issuer);
    writer.writeElementIfSet("Id", identification);
    writer.writeElementIfSet("ShrtNm", shortName);
    writer.writeEndElement();
}

void KVRPoilIdentification::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "Tp") == 0) {
            type = PartyTypeCodeToString(e->text);
        } else if (std::strcmp(e->name, "Issr") == 0) {
            issuer = PartyTypeCodeToString(e->text);
        } else if (std::strcmp(e->name, "Id") == 0) {
            identification = e->text;
        } else if (std::strcmp(e->name, "ShrtNm") == 0) {
            shortName = e->text;
        }
    }
}
