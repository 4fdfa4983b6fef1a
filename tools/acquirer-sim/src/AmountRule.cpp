#include "AmountRule.h"

namespace acqsim {

AmountDecision AmountRule::decide(const std::string& amountInCents) {
    std::string lastTwo = amountInCents.size() >= 2 ? amountInCents.substr(amountInCents.size() - 2) : amountInCents;
    if (lastTwo == "51") {
        return AmountDecision::Decline;
    }
    if (lastTwo == "52") {
        return AmountDecision::PartialApproval;
    }
    if (lastTwo == "53") {
        return AmountDecision::TechnicalError;
    }
    if (lastTwo == "54") {
        return AmountDecision::LateAnswer;
    }
    if (lastTwo == "55") {
        return AmountDecision::HtmlErrorPage;
    }
    if (lastTwo == "56") {
        return AmountDecision::NoIdentifiers;
    }
    if (lastTwo == "57") {
        return AmountDecision::OddIssuerData;
    }
    if (lastTwo == "58") {
        return AmountDecision::TruncatedAnswer;
    }
    return AmountDecision::Approve;
}

std::string AmountRule::responseCode(AmountDecision decision) {
    switch (decision) {
    case AmountDecision::Decline:
        return "DECL";
    case AmountDecision::PartialApproval:
        return "PART";
    case AmountDecision::TechnicalError:
        return "TECH";
    default:
        return "APPR";
    }
}

std::string AmountRule::description() {
    return "Authorisation decisions, by the last two digits of TtlAmt (integer cents):\n"
           "  ..51  declined (Rspn DECL)\n"
           "  ..52  partly approved (Rspn PART)\n"
           "  ..53  technical error (Rspn TECH)\n"
           "  ..54  approved, but answered only after --auth-delay seconds (default 55,\n"
           "        longer than the library's 50 s time-out)\n"
           "  ..55  an HTML error page with HTTP status 500 instead of a message\n"
           "  ..56  approved, but the answer carries no RcptTxId, TxRef or AuthstnCd\n"
           "  ..57  approved, with issuer chip data of an odd number of digits (chip sales)\n"
           "  ..58  approved, but the answer is cut off halfway\n"
           "  other amounts are approved (Rspn APPR).\n";
}

} // namespace acqsim
