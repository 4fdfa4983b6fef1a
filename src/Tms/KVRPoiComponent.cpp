#include "Tms/KVRPoiComponent.h"

#include "Host/XMLWriter.h"
#include "Tms/KVRTmsCodeTable.h"

namespace {
const KVRTmsCodeTable& componentTypes() {
    static const KVRTmsCodeTable table(0,
                                       {"AQPP", "APPR", "TLPR", "SCPR", "SERV", "TERM", "DVCE", "SECM", "APLI",
                                        "EMVK", "EMVO", "MDWR", "DRVR", "OPST", "MRPR"},
                                       "Unexpected PoiComponentTypeCode.");
    return table;
}

void writeTypeAndIdentification(XMLWriter& writer, const std::string& typeCode,
                                const KVRPointOfInteractionComponentIdentification* identification) {
    writer.writeElement("Tp", typeCode);
    if (identification) identification->write(writer);
}
}  // namespace

void KVRPointOfInteractionComponentIdentification::write(XMLWriter& writer) const {
    writer.writeStartElement("Id");
    writer.writeElementIfSet("Id", identification);
    writer.writeElementIfSet("PrvdrId", providerIdentification);
    writer.writeElementIfSet("ItmNb", itemNumber);
    writer.writeElementIfSet("SrlNb", serialNumber);
    writer.writeEndElement();
}

std::string KVRPoiComponent::PoiComponentTypeCodeToString(uint32_t value) {
    return componentTypes().codeOrThrow(value);
}

void KVRPoiComponent::write(XMLWriter& writer) const {
    std::string code = PoiComponentTypeCodeToString(type);
    writer.writeStartElement("POICmpnt");
    writeTypeAndIdentification(writer, code, identification.get());
    for (const auto& dataSet : listDataSet)
        if (dataSet) dataSet->write(writer);
    writer.writeEndElement();
}

std::string KVRPoiComponentTerm::poiComponentTypeCodeToString(uint32_t value) {
    return componentTypes().codeOrThrow(value);
}

void KVRPoiComponentTerm::write(XMLWriter& writer) const {
    std::string code = poiComponentTypeCodeToString(type);
    writer.writeStartElement("POICmpnt");
    writeTypeAndIdentification(writer, code, identification.get());
    writer.writeEndElement();
}
