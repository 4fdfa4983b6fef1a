#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRText.h"
#include "Host/Messages/KVRTraceability.h"

#include <optional>
#include <string>

/// `Hdr` of the authorisation and cancellation messages. The message function
/// is always written; every other child only when set.
class KVRHeader {
public:
    KVRHeader();

    KVRMessageFunction messageFunction = KVRMessageFunctionAUTQ;  // MsgFctn
    std::optional<std::string> protocolVersion;                   // PrtcolVrsn
    std::optional<std::string> exchangeIdentification;            // XchgId
    std::optional<KVRText> creationDateTime;                      // CreDtTm
    std::optional<KVRGenericIdentification> initiatingParty;      // InitgPty
    std::optional<KVRGenericIdentification> recipientParty;       // RcptPty
    std::optional<KVRTraceability> trace;                         // Tracblt

    void write(XMLWriter& writer) const;
    void read(const TBXMLElement* firstChild);
};

// Defaulted here, outside their classes, the constructors count as written
// by hand: an element made in place in its optional is then only constructed,
// not first zeroed whole.
inline KVRHeader::KVRHeader() = default;
