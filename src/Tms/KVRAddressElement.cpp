#include "Tms/KVRAddressElement.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

#include <cstring>

namespace {
// The address's children, in the order they are written.
struct AddressField {
    const char* tag;
    std::optional<std::string> (KVRAddressModel::*get)() const;
    void (KVRAddressModel::*set)(std::optional<std::string>);
};

const AddressField kFields[] = {
    {"City", &KVRAddressModel::city, &KVRAddressModel::setCity},
    {"Strt", &KVRAddressModel::street, &KVRAddressModel::setStreet},
    {"Dstrct", &KVRAddressModel::district, &KVRAddressModel::setDistrict},
    {"DrNb", &KVRAddressModel::doorNumber, &KVRAddressModel::setDoorNumber},
    {"Nghbhd", &KVRAddressModel::neighborhood, &KVRAddressModel::setNeighborhood},
    {"ZipCd", &KVRAddressModel::zipCode, &KVRAddressModel::setZipCode},
    {"Cmplmt", &KVRAddressModel::complement, &KVRAddressModel::setComplement},
};
}  // namespace

void KVRAddressElement::read(KVRAddress& address, const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        for (const AddressField& field : kFields) {
            if (std::strcmp(e->name, field.tag) == 0) {
                (address.*field.set)(std::string(KVRElementReading::text(e)));
                break;
            }
        }
    }
}

void KVRAddressElement::write(const KVRAddress& address, XMLWriter& writer) {
    writer.writeStartElement("Adr");
    for (const AddressField& field : kFields) writer.writeElementIfSet(field.tag, (address.*field.get)());
    writer.writeEndElement();
}
