#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRTraceability.h"

#include <memory>
#include <optional>
#include <string>

/// `Hdr` of the authorisation and cancellation messages. The message function
/// is always written; every other child only when set.
class KVRHeader {
public:
    KVRMessageFunction messageFunction = KVRMessageFunctionAUTQ;  // MsgFctn
    std::optional<std::string> protocolVersion;                   // PrtcolVrsn
    std::optional<std::string> exchangeIdentification;            // XchgId
    std::optional<std::string> creationDateTime;                  // CreDtTm
    std::shared_ptr<KVRGenericIdentification> initiatingParty;    // InitgPty
    std::shared_ptr<KVRGenericIdentification> recipientParty;     // RcptPty
    std::shared_ptr<KVRTraceability> trace;                       // Tracblt

    void write(XMLWriter& writer) const;
    void read(const TBXMLElement* firstChild);
};
