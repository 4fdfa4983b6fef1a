#include "Tms/KVRSecurityTrailer.h"

#include "Host/KVREnumParser.h"
#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

using KVRElementReading::named;

namespace {
KVRContentType contentTypeFromString(const char* code) {
    for (int32_t value = KVRContentTypeDATA; value <= KVRContentTypeAUTH; ++value)
        if (KVREnumParser::contentTypeToString(value) == code) return static_cast<KVRContentType>(value);
    return KVRContentTypeDATA;
}
}  // namespace

void KVRSecurityTrailer::write(XMLWriter& writer) const {
    std::string code = KVREnumParser::contentTypeToString(contentType);
    writer.writeStartElement("SctyTrlr");
    writer.writeElement("CnttTp", code);
    writer.writeEndElement();
}

void KVRSecurityTrailer::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling)
        if (named(e, "CnttTp")) contentType = contentTypeFromString(e->text);
}
