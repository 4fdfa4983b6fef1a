#pragma once

#include "Tms/KVRDataSetIdentification.h"
#include "Tms/KVRTmsEnumTypes.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class XMLWriter;

/// `ActnId`: the terminal-management action an event reports on.
class KVRRequestActionIdentification {
public:
    KVRTerminalManagementAction actionType = KVRTerminalManagementActionACTV;  // ActnTp, always written
    std::shared_ptr<KVRDataSetIdentification> dataSetIdentification;           // Id

    void write(XMLWriter& writer) const;

    /// Raises "Unexpected TerminalManagementActionCode." for a number outside 0 to 6.
    static std::string TerminalManagementActionCodeToString(uint32_t value);
};

/// `Evt`: the outcome of an earlier terminal-management action.
class KVREvent {
public:
    std::optional<std::string> timeStamp;                                 // TmStmp
    KVRResultCode result = KVRResultCodeACCD;                             // Rslt, always written
    std::shared_ptr<KVRRequestActionIdentification> actionIdentification; // ActnId

    void write(XMLWriter& writer) const;

    /// Raises "Unexpected ResultCode." for a number outside 0 to 13.
    static std::string resultToString(uint32_t value);
};
