#include "Tms/KVRAid.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Utils/KVRStringUtil.h"

#include <string_view>
#include <unordered_map>

namespace {
// One child of `Aid`: a text field or an integer field.
struct AidField {
    const char* tag;
    std::optional<std::string> KVRAid::*text;
    std::optional<int32_t> KVRAid::*number;
};

constexpr AidField text(const char* tag, std::optional<std::string> KVRAid::*member) { return {tag, member, nullptr}; }
constexpr AidField number(const char* tag, std::optional<int32_t> KVRAid::*member) { return {tag, nullptr, member}; }

const AidField kFields[] = {
    text("AID", &KVRAid::ApplicationId),
    number("BrandId", &KVRAid::TefBrandId),
    text("AppName", &KVRAid::ApplicationName),
    number("AidLen", &KVRAid::AidLength),
    text("SelFlag", &KVRAid::SelFlag),
    text("Priority", &KVRAid::priority),
    text("TargetPer", &KVRAid::targerPer),
    text("MaxTargetPer", &KVRAid::MaxTargerPer),
    text("FloorLimitCheck", &KVRAid::FloorLimitCheck),
    text("RandTransSel", &KVRAid::RandTransSel),
    text("VelocityCheck", &KVRAid::VelocityCheck),
    text("FloorLimit", &KVRAid::floorLimit),
    text("Threshold", &KVRAid::Threshold),
    text("TACDenial", &KVRAid::TerminalActionCodeDenial),
    text("TACDefault", &KVRAid::TerminalActionCodeDefault),
    text("TACOnline", &KVRAid::TerminalActionCodeOnline),
    text("dDol", &KVRAid::dDol),
    text("tDol", &KVRAid::tDol),
    text("Version", &KVRAid::Version),
    text("RiskMainData", &KVRAid::RiskMainData),
    text("Recidx", &KVRAid::Recidx),
    text("ApplicationType", &KVRAid::ApplicationType),
    text("TerminalCountry", &KVRAid::TerminalCountry),
    text("TerminalCurrencyCode", &KVRAid::TerminalCurrencyCode),
    text("TerminalCurrencyExponent", &KVRAid::TerminalCurrencyExponent),
    text("AdditionalTerminalCapabilities", &KVRAid::AdditionalTerminalCapabilities),
    text("TerminalType", &KVRAid::TerminalType),
    text("CTLSZEROAM", &KVRAid::CTLSZEROAM),
    text("TCC", &KVRAid::TCC),
    text("CTLSMODE", &KVRAid::CTLSMODE),
    text("CTLSTRNLIM", &KVRAid::CTLSTRNLIM),
    text("CTLSFLRLIM", &KVRAid::CTLSFLRLIM),
    text("CTLSCVMLIM", &KVRAid::CTLSCVMLIM),
    text("CTLSAPPVER", &KVRAid::CTLSAPPVER),
    number("AcquirerNumber", &KVRAid::AcquirerNumber),
    number("MerchantId", &KVRAid::MerchantId),
    number("TerminalId", &KVRAid::TerminalId),
    number("Mcc", &KVRAid::Mcc),
    text("TerminalCapabilities", &KVRAid::TerminalCapabilities),
};

// Every child of every application is looked up here: an index by name,
// rather than a walk through the table, keeps a long table's load short. The
// first field of a name wins, as in the table's order.
const AidField* fieldNamed(const char* tag) {
    static const std::unordered_map<std::string_view, const AidField*> index = [] {
        std::unordered_map<std::string_view, const AidField*> byName;
        for (const AidField& field : kFields) byName.emplace(field.tag, &field);
        return byName;
    }();
    auto found = index.find(tag);
    return found == index.end() ? nullptr : found->second;
}
}  // namespace

void KVRAid::read(const TBXMLElement* aid) {
    if (!aid) return;
    for (const TBXMLElement* e = aid->firstChild; e; e = e->nextSibling) {
        const AidField* field = fieldNamed(e->name);
        if (!field) continue;
        if (field->text)
            this->*(field->text) = std::string(KVRElementReading::text(e));
        else
            this->*(field->number) = KVRStringUtil::leadingInt32(e->text);
    }
}

void KVRAid::write(XMLWriter& writer) const {
    writer.writeStartElement("Aid");
    for (const AidField& field : kFields) {
        if (field.text == &KVRAid::CTLSZEROAM && CTLSZEROAM) {
            writer.writeStartElement("TerminalCurrencyCode");
            if (TerminalCurrencyCode) writer.writeCharacters(*TerminalCurrencyCode);
            writer.writeEndElement();
        }
        if (field.text) {
            writer.writeElementIfSet(field.tag, this->*(field.text));
        } else if (const auto& value = this->*(field.number)) {
            writer.writeElement(field.tag, KVRStringUtil::format("%d", *value));
        }
    }
    writer.writeEndElement();
}
