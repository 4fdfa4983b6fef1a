#pragma once

#include <optional>
#include <string>

class XMLWriter;
struct TBXMLElement;

/// `Hdr` of the terminal-management messages.
class KVRTmsHeader {
public:
    bool downloadTransfer = false;                       // DwnldTrf
    std::optional<std::string> formatVersion;            // FrmtVrsn
    std::optional<std::string> exchangeIdentification;   // XchgId
    std::optional<std::string> creationDateTime;         // CreDtTm

    /// DwnldTrf is always written, "true" or "false".
    void write(XMLWriter& writer) const;
    /// Any text in DwnldTrf, "false" included, reads as true; only an empty
    /// one reads as false. The hosts send the flag inconsistently.
    void read(const TBXMLElement* firstChild);
};
