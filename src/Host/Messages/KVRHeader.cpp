#include "Host/Messages/KVRHeader.h"

#include "Host/KVREnumParser.h"
#include "Host/Messages/KVRElementReading.h"
#include "Host/TBXML.h"
#include "Host/XMLWriter.h"

using KVRElementReading::named;
using KVRElementReading::text;
using KVRElementReading::readNested;

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
        if (named(e, "MsgFctn")) {
            messageFunction = KVREnumParser::stringToMessageFunctionCode(text(e));
        } else if (named(e, "PrtcolVrsn")) {
            protocolVersion = text(e);
        } else if (named(e, "XchgId")) {
            exchangeIdentification = text(e);
        } else if (named(e, "CreDtTm")) {
            creationDateTime = text(e);
        } else if (named(e, "InitgPty")) {
            readNested(initiatingParty, e);
        } else if (named(e, "RcptPty")) {
            readNested(recipientParty, e);
        } else if (named(e, "Tracblt")) {
            readNested(trace, e);
        }
    }
}
