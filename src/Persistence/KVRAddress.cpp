#include <kovra/KVRAddress.h>

#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Persistence/KVREntityDescription.h"

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

const KVREntityDescription& KVRAddress::entity() {
    static const KVREntityDescription description("KVRAddress", KVRAddressModel::entity(),
                                                  [] { return std::shared_ptr<KVRManagedObject>(new KVRAddress()); });
    return description;
}

void KVRAddress::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        for (const AddressField& field : kFields) {
            if (std::strcmp(e->name, field.tag) == 0) {
                (this->*field.set)(std::string(e->text));
                break;
            }
        }
    }
}

void KVRAddress::write(XMLWriter& writer) const {
    writer.writeStartElement("Adr");
    for (const AddressField& field : kFields) writer.writeElementIfSet(field.tag, (this->*field.get)());
    writer.writeEndElement();
}
