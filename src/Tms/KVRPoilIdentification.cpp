#include "Tms/KVRPoilIdentification.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Tms/KVRTmsCodeTable.h"

using KVRElementReading::named;
using KVRElementReading::text;

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
        if (named(e, "Tp")) {
            type = PartyTypeCodeToString(e->text);
        } else if (named(e, "Issr")) {
            issuer = PartyTypeCodeToString(e->text);
        } else if (named(e, "Id")) {
            identification = text(e);
        } else if (named(e, "ShrtNm")) {
            shortName = text(e);
        }
    }
}
