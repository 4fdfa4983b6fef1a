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
    KVRGenericIdentification();

    std::optional<std::string> identification;                    // Id
    KVRInitiatingParty initiatingPartyType = KVRInitiatingPartyOPOI;   // Tp
    KVRInitiatingParty initiatingPartyIssuer = KVRInitiatingPartyOPOI; // Issr
    std::optional<std::string> shortName;                         // ShrtNm

    void write(XMLWriter& writer, const std::string& tag) const;
    /// Fills the fields from the element's first child and its siblings.
    void read(const TBXMLElement* firstChild);
};

// Defaulted outside the class, the constructor counts as written by hand: an
// identification made in place in its optional is only constructed, not
// first zeroed whole.
inline KVRGenericIdentification::KVRGenericIdentification() = default;
