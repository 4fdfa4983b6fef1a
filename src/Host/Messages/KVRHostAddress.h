#pragma once

#include <cstdint>
#include <optional>
#include <string>

class XMLWriter;
struct TBXMLElement;

/// A host address of the terminal-management configuration (`Adr` under
/// `HstComParams`). The configuration is only ever read; no exchange uses
/// these addresses.
class KVRHostAddress {
public:
    std::optional<std::string> primaryAddress;    // PmryAdr
    int32_t primaryPortNumber = 0;                // PmryPortNb
    std::optional<std::string> secundaryAddress;  // ScndryAdr
    int32_t secundaryPortNumber = 0;              // ScndryPortNb
    std::optional<std::string> userName;          // UsrNm
    std::optional<std::string> accesCode;         // AccsCd

    /// The children inside an element with an empty name: whoever embeds the
    /// address supplies no tag of its own.
    void write(XMLWriter& writer) const;
    /// Takes the four texts; the port elements are recognised but their texts
    /// are not converted, so the port fields keep their values.
    void read(const TBXMLElement* firstChild);
};
