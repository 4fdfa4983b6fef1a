#pragma once

#include "MerchantDirectory.h"
#include "SimReply.h"
#include "SimState.h"

#include <string>

namespace acqsim {

// "/CancellationAdvice": checks the advice (its header after the body, and
// TxRef before TxDtTm) and approves it when it names an approved (or partly
// approved) authorisation of the same merchant by its RcptTxId, or by its
// InitrTxId alone when the advice carries no RcptTxId, with matching TxRef
// and amount. An advice repeated for a cancelled authorisation is approved
// again; anything else is declined. Answers wait `delaySeconds`.
class CancellationHandler {
public:
    CancellationHandler(const MerchantDirectory& merchants, SimState& state, double delaySeconds);

    SimReply handle(const std::string& body);

private:
    const MerchantDirectory& merchants_;
    SimState& state_;
    double delaySeconds_;
};

} // namespace acqsim
