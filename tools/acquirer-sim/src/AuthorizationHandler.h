#pragma once

#include "AmountRule.h"
#include "MerchantDirectory.h"
#include "SimReply.h"
#include "SimState.h"

#include <string>

#include <pugixml.hpp>

namespace acqsim {

// What the checks keep of an authorisation request.
struct AuthorisationRequestFacts {
    std::string merchantId;
    std::string amount;
    std::string accountType;
    std::string reference;
    std::string initiatorId;
    std::string pan;
    std::string cardRequestData;   // ICCRltdData; empty for a stripe sale
};

// "/Authorize": checks the acceptor authorisation request strictly (element
// order included: the header comes after the body) and answers an acceptor
// authorisation response decided by AmountRule. A request that breaks a rule
// gets a rejection document, so a faulty request never looks approved.
class AuthorizationHandler {
public:
    // Answers wait `replyDelaySeconds`; late ones (..54) `lateAnswerSeconds`.
    AuthorizationHandler(const MerchantDirectory& merchants, SimState& state, double lateAnswerSeconds,
                         double replyDelaySeconds);

    SimReply handle(const std::string& body);

private:
    AuthorisationRequestFacts check(pugi::xml_node request) const;
    SimReply answer(const AuthorisationRequestFacts& facts, AmountDecision decision);

    const MerchantDirectory& merchants_;
    SimState& state_;
    double lateAnswerSeconds_;
    double replyDelaySeconds_;
};

} // namespace acqsim
