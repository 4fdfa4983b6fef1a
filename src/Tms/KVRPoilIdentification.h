#pragma once

#include "Tms/KVRTmsEnumTypes.h"

#include <cstdint>
#include <optional>
#include <string>

class XMLWriter;
struct TBXMLElement;

/// `POIId`: the point of interaction as the terminal-management host knows it.
class KVRPoilIdentification {
public:
    KVRPartyType type = KVRPartyTypeACCP;     // Tp, written only when not 0
    KVRPartyType issuer = KVRPartyTypeACCP;   // Issr, written only when not 0
    std::optional<std::string> identification;  // Id
    std::optional<std::string> shortName;       // ShrtNm

    void write(XMLWriter& writer) const;
    void read(const TBXMLElement* firstChild);

    /// The party code of a number; nothing for a number outside the set.
    static std::optional<std::string> serializePartyTypeCodeToString(uint32_t value);
    /// The number of a party code (despite the name); 0 when unknown.
    static KVRPartyType PartyTypeCodeToString(const char* code);
};
