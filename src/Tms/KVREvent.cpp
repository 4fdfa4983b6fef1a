#include "Tms/KVREvent.h"

#include "Host/XMLWriter.h"
#include "Tms/KVRTmsCodeTable.h"

std::string KVRRequestActionIdentification::TerminalManagementActionCodeToString(uint32_t value) {
    static const KVRTmsCodeTable table(0, {"ACTV", "DCTV", "DELT", "DWNL", "INST", "RSTR", "UPLD"},
                                       "Unexpected TerminalManagementActionCode.");
    return table.codeOrThrow(value);
}

void KVRRequestActionIdentification::write(XMLWriter& writer) const {
    std::string code = TerminalManagementActionCodeToString(actionType);
    writer.writeStartElement("ActnId");
    writer.writeElement("ActnTp", code);
    if (dataSetIdentification) dataSetIdentification->write(writer);
    writer.writeEndElement();
}

std::string KVREvent::resultToString(uint32_t value) {
    static const KVRTmsCodeTable table(0,
                                       {"ACCD", "CNTE", "FMTE", "INVC", "LENE", "OVER", "MISS", "NSUP", "SIGE",
                                        "SUCC", "SYNE", "TIMO", "UKDT", "UKRF"},
                                       "Unexpected ResultCode.");
    return table.codeOrThrow(value);
}

void KVREvent::write(XMLWriter& writer) const {
    std::string code = resultToString(result);
    writer.writeStartElement("Evt");
    writer.writeElementIfSet("TmStmp", timeStamp);
    writer.writeElement("Rslt", code);
    if (actionIdentification) actionIdentification->write(writer);
    writer.writeEndElement();
}
