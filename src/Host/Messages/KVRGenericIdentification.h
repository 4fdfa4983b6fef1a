#pragma once

#include "Host/KVREnumTypes.h"

#include <optional>
#include <string>

class XMLWriter;
struct TBXMLElement;

/// A party identification that appears under several tags (`InitgPty`,
/// `RcptPty`, `RlayId`, `Id`, `MrchntId`...). `Tp` and `Issr` are always
/// written, "OPOI" when never set.
class KVRGenericIdentification {
public:
    std::optional<std::string> identification;                    // Id
    KVRInitiatingParty initiatingPartyType = KVRInitiatingPartyOPOI;   // Tp
    KVRInitiatingParty initiatingPartyIssuer = KVRInitiatingPartyOPOI; // Issr
    std::optional<std::string> shortName;                         // ShrtNm

    void write(XMLWriter& writer, const std::string& tag) const;
    /// Fills the fields from the element's first child and its siblings.
    void read(const TBXMLElement* firstChild);
};
