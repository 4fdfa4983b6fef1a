#include "Host/Messages/KVRHeader.h"

#include "Host/KVREnumParser.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

#include <cstring>

void KVRHeader::write(XMLWriter& writer) const {
    writer.writeStartElement("Hdr");
    writer.writeElement("MsgFctn", KVREnumParser::messageFunctionCodeTypeToString(messageFunction));
    writer.writeElementIfSet("PrtcolVrsn", protocolVersion);
    writer.writeElementIfSet("XchgId", exchangeIdentification);
    writer.writeElementIfSet("CreDtTm", creationDateTime);
    if (initiatingParty) initiatingParty->write(writer, "InitgPty");
    if (recipientParty) recipientParty->write(writer, "RcptPty");
    if (trace) trace->write(writer);
    writer.writeEndElement();
}

void KVRHeader::read(const TBXMLElement* firstChild) {
    for (const TBXMLElement* e = firstChild; e; e = e->nextSibling) {
        if (std::strcmp(e->name, "MsgFctn") == 0) {
            messageFunction = KVREnumParser::stringToMessageFunctionCode(e->text);
        } else if (std::strcmp(e->name, "PrtcolVrsn") == 0) {
            protocolVersion = e->text;
        } else if (std::strcmp(e->name, "XchgId") == 0) {
            exchangeIdentification = e->text;
        } else if (std::strcmp(e->name, "CreDtTm") == 0) {
            creationDateTime = e->text;
        } else if (std::strcmp(e->name, "InitgPty") == 0) {
            initiatingParty = std::make_shared<KVRGenericIdentification>();
            initiatingParty->read(e->firstChild);
        } else if (std::strcmp(e->name, "RcptPty") == 0) {
            recipientParty = std::make_shared<KVRGenericIdentification>();
            recipientParty->read(e->firstChild);
        } else if (std::strcmp(e->name, "Tracblt") == 0) {
            trace = std::make_shared<KVRTraceability>();
            trace->read(e->firstChild);
        }
    }
}
