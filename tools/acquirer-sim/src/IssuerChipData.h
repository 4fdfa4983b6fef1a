#pragma once

#include <string>

namespace acqsim {

// The issuer's answer to the card for a chip sale, as BER-TLV hexadecimal:
// tag 8A (authorisation response code) and tag 91 (issuer authentication
// data: an 8-byte cryptogram and the response code). There are no issuer
// keys here, so the cryptogram is a digest of the card's request data: the
// same request always gets the same answer. The card's application
// cryptogram (tag 9F26) is echoed first, as acquirers return it for the
// receipt.
class IssuerChipData {
public:
    static std::string build(const std::string& responseCode, const std::string& cardRequestData,
                             const std::string& receiptId);
    // Two ASCII digits, as the card expects them in tag 8A.
    static std::string authorisationResponseCode(const std::string& responseCode);
    // The value of one tag of a BER-TLV hexadecimal text; empty when absent or
    // when the text is malformed before it.
    static std::string tagValue(const std::string& tlvHex, const std::string& tag);
};

} // namespace acqsim
