#include "Tms/KVRAidTable.h"

#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"
#include "Utils/KVRStringUtil.h"

#include <string_view>
#include <unordered_map>

namespace {
using Command = KVRAidTableCommand;

// Children of `Aid` that fill a record field.
struct RecordField {
    const char* tag;
    void (*set)(Command&, const char* text);
};

int32_t integer(const char* text) { return KVRStringUtil::leadingInt32(text); }

const RecordField kRecordFields[] = {
    {"AcquirerNumber", [](Command& c, const char* t) { c.TAB_ACQ = integer(t); }},
    {"Recidx", [](Command& c, const char* t) { c.TAB_RECIDX = integer(t); }},
    {"AID", [](Command& c, const char* t) { c.T1_AID = t; }},
    {"ApplicationType", [](Command& c, const char* t) { c.T1_APPTYPE = integer(t); }},
    {"AppName", [](Command& c, const char* t) { c.T1_DEFLABEL = t; }},
    {"TerminalCountry", [](Command& c, const char* t) { c.T1_TRMCNTRY = integer(t); }},
    {"TerminalCurrencyCode", [](Command& c, const char* t) { c.T1_TRMCURR = integer(t); }},
    {"TerminalCurrencyExponent", [](Command& c, const char* t) { c.T1_TRMCRREXP = integer(t); }},
    {"TerminalCapabilities", [](Command& c, const char* t) { c.T1_TRMCAPAB = t; }},
    {"AdditionalTerminalCapabilities", [](Command& c, const char* t) { c.T1_ADDTRMCP = t; }},
    {"TerminalType", [](Command& c, const char* t) { c.T1_TRMTYP = integer(t); }},
    {"TACDefault", [](Command& c, const char* t) { c.T1_TACDEF = t; }},
    {"TACDenial", [](Command& c, const char* t) { c.T1_TACDEN = t; }},
    {"TACOnline", [](Command& c, const char* t) { c.T1_TACONL = t; }},
    {"FloorLimit", [](Command& c, const char* t) { c.T1_FLRLIMIT = t; }},
    {"TCC", [](Command& c, const char* t) { c.T1_TCC = t; }},
    {"CTLSZEROAM", [](Command& c, const char* t) { c.T1_CTLSZEROAM = t; }},
    {"CTLSMODE", [](Command& c, const char* t) { c.T1_CTLSMODE = t; }},
    {"CTLSTRNLIM", [](Command& c, const char* t) { c.T1_CTLSTRNLIM = t; }},
    {"CTLSFLRLIM", [](Command& c, const char* t) { c.T1_CTLSFLRLIM = t; }},
    {"CTLSCVMLIM", [](Command& c, const char* t) { c.T1_CTLSCVMLIM = t; }},
    {"CTLSAPPVER", [](Command& c, const char* t) { c.T1_CTLSAPPVER = t; }},
    {"tDol", [](Command& c, const char* t) { c.T1_TDOLDEF = t; }},
    {"dDol", [](Command& c, const char* t) { c.T1_DDOLDEF = t; }},
};

// Values the PIN pad gets whatever the host sends: the acquirer identifies
// merchant and terminal on its side, not through the PIN pad's tables.
void setFixedValues(Command& c) {
    c.T1_ICCSTD = 3;
    c.T1_APPVER1 = "0002";
    c.T1_APPVER2 = "0002";
    c.T1_APPVER3 = "0000";
    c.T1_MERCHID = "020000080750001";
    c.T1_MCC = "0000";
    c.T1_TRMID = "00000000";
    c.T1_RUF1 = "0";
    c.T1_ARCOFFLN = "Y1Z1Y3Z3";
}

// Looked up for every child of every application: by an index, not a walk
// through the table. The first field of a name wins, as in the table's order.
void setField(Command& c, const TBXMLElement* child) {
    static const std::unordered_map<std::string_view, const RecordField*> index = [] {
        std::unordered_map<std::string_view, const RecordField*> byName;
        for (const RecordField& field : kRecordFields) byName.emplace(field.tag, &field);
        return byName;
    }();
    auto found = index.find(child->name);
    if (found != index.end()) found->second->set(c, child->text);
}
}  // namespace

std::optional<std::vector<std::shared_ptr<KVRAidTableCommand>>> KVRAidTable::readAidString(
    const std::string& text, std::optional<KVRError>* error) {
    std::optional<KVRError> parseError;
    TBXML xml(text, &parseError);
    if (parseError) {
        if (error) *error = parseError;
        return std::nullopt;
    }
    Aids.clear();
    std::vector<std::shared_ptr<KVRAidTableCommand>> commands;
    const TBXMLElement* root = xml.rootXMLElement();
    for (const TBXMLElement* e = TBXML::childElementNamed("Aid", root); e; e = TBXML::nextSiblingNamed("Aid", e)) {
        auto aid = std::make_shared<KVRAid>();
        aid->read(e);
        Aids.push_back(aid);
        commands.push_back(aidCommandFromXml(e));
    }
    return commands;
}

std::shared_ptr<KVRAidTableCommand> KVRAidTable::aidCommandFromXml(const TBXMLElement* element) {
    auto command = std::make_shared<KVRAidTableCommand>();
    if (!element) return command;
    if (KVRElementReading::named(element, "AidTbl")) {
        for (const TBXMLElement* child = element->firstChild; child; child = child->nextSibling)
            aidCommandFromXml(child);
        return command;
    }
    for (const TBXMLElement* child = element->firstChild; child; child = child->nextSibling) setField(*command, child);
    setFixedValues(*command);
    return command;
}

void KVRAidTable::writeAidWithXmlWriter(XMLWriter& writer) const {
    writer.writeStartElement("AidTbl");
    for (const auto& aid : Aids)
        if (aid) aid->write(writer);
    writer.writeEndElement();
}
