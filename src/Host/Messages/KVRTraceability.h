#pragma once

#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRText.h"

#include <optional>
#include <string>

/// `Tracblt`: the relay a message passed through, with the times in and out.
class KVRTraceability {
public:
    KVRTraceability();

    std::optional<KVRGenericIdentification> relayIdentification;    // RlayId
    std::optional<KVRText> traceDateTimeIn;                         // TracDtTmIn
    std::optional<KVRText> traceDateTimeOut;                        // TracDtTmOut

    void write(XMLWriter& writer) const;
    void read(const TBXMLElement* firstChild);
};

// As for the identification: constructed in place, never zeroed first.
inline KVRTraceability::KVRTraceability() = default;
