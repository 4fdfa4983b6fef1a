#include "Tms/KVRDataSetIdentification.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Tms/KVRTmsCodeTable.h"

using KVRElementReading::named;
using KVRElementReading::text;

namespace {
const KVRTmsCodeTable& categories() {
    static const KVRTmsCodeTable table(
        1, {"AQPR", "APPR", "TXCP", "AKCP", "DLGT", "MGTP", "MRPR", "SCPR", "SWPK", "STRP", "TRPR", "VDPR"},
        "Unexpected DataSetCategoryCode.");
    return table;
}
}  // namespace

std::string KVRDataSetIdentification::SerializeDataSetCategoryCodeToString(uint32_t value) {
    return categories().codeOrThrow(value);
}

KVRDataSetCategory KVRDataSetIdentification::dataSetCategoryFromString(const char* code) {
    return static_cast<KVRDataSetCategory>(categories().value(code));
}

void KVRDataSetIdentification::write(XMLWriter& writer) const {
    // Looked up before anything is written, so a bad category leaves no open tag.
    std::string category = SerializeDataSetCategoryCodeToString(type);
    writer.writeStartElement("Id");
    writer.writeElement("Tp", category);
    writer.writeElementIfSet("Id", identification);
    writer.writeElementIfSet("Vrsn", version);
    writer.writeElementIfSet("CreDtTm", creationDateTime);
    writer.writeElementIfSet("Nm", name);
    writer.writeEndElement();
}

void KVRDataSetIdentification::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (named(e, "Tp")) {
            type = dataSetCategoryFromString(e->text);
        } else if (named(e, "Id")) {
            identification = text(e);
        } else if (named(e, "Vrsn")) {
            version = text(e);
        } else if (named(e, "CreDtTm")) {
            creationDateTime = text(e);
        } else if (named(e, "Nm")) {
            name = text(e);
        }
    }
}
