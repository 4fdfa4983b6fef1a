#pragma once

#include <string>

namespace acqsim {

enum class AmountDecision {
    Approve,
    Decline,           // ...51
    PartialApproval,   // ...52
    TechnicalError,    // ...53
    LateAnswer,        // ...54: approved, but answered after the client has given up
    HtmlErrorPage,     // ...55: an HTML page with status 500 instead of a message
    NoIdentifiers,     // ...56: approved, with no RcptTxId, TxRef or AuthstnCd in the answer
    OddIssuerData,     // ...57: approved, with issuer chip data of an odd number of digits
    TruncatedAnswer,   // ...58: approved, the answer cut off halfway
};

// How the emulated issuer decides, by the last two digits of the amount in
// cents, so a test picks the outcome it needs with the amount alone.
class AmountRule {
public:
    static AmountDecision decide(const std::string& amountInCents);
    // The ISO 20022 response code the decision answers (APPR, DECL, PART, TECH).
    static std::string responseCode(AmountDecision decision);
    // The rules as --help prints them.
    static std::string description();
};

} // namespace acqsim
