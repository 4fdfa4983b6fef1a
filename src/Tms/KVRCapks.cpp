#include "Tms/KVRCapks.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Utils/KVRStringUtil.h"

#include <cstring>

namespace {
// One child of `Capk`: a text field or an integer field.
struct CapkField {
    const char* tag;
    std::optional<std::string> KVRCapks::*text;
    std::optional<int32_t> KVRCapks::*number;
};

constexpr CapkField text(const char* tag, std::optional<std::string> KVRCapks::*member) {
    return {tag, member, nullptr};
}
constexpr CapkField number(const char* tag, std::optional<int32_t> KVRCapks::*member) {
    return {tag, nullptr, member};
}

const CapkField kFields[] = {
    text("CapkIdx", &KVRCapks::capkIdx),
    text("CheckSum", &KVRCapks::checkSum),
    text("DataSetVersion", &KVRCapks::dataSetVersion),
    text("Exponent", &KVRCapks::exponent),
    text("Modulus", &KVRCapks::modulus),
    text("RID", &KVRCapks::rid),
    text("RecIdx", &KVRCapks::recIdx),
    number("ExponentLen", &KVRCapks::exponentLength),
    number("ModulusLen", &KVRCapks::modulusLength),
    number("AcquirerNumber", &KVRCapks::acquirerNumber),
};

const CapkField* fieldNamed(const char* tag) {
    for (const CapkField& field : kFields)
        if (std::strcmp(field.tag, tag) == 0) return &field;
    return nullptr;
}
}  // namespace

void KVRCapks::read(const TBXMLElement* capk) {
    if (!capk) return;
    for (const TBXMLElement* e = capk->firstChild; e; e = e->nextSibling) {
        const CapkField* field = fieldNamed(e->name);
        if (!field) continue;
        if (field->text)
            this->*(field->text) = std::string(KVRElementReading::text(e));
        else
            this->*(field->number) = KVRStringUtil::leadingInt32(e->text);
    }
}

void KVRCapks::write(XMLWriter& writer) const {
    writer.writeStartElement("Capk");
    for (const CapkField& field : kFields) {
        if (field.text) {
            writer.writeElementIfSet(field.tag, this->*(field.text));
        } else if (const auto& value = this->*(field.number)) {
            writer.writeElement(field.tag, KVRStringUtil::format("%d", *value));
        }
    }
    writer.writeEndElement();
}
