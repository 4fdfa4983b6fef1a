#pragma once

#include "MerchantDirectory.h"
#include "SimReply.h"
#include "SimState.h"

#include <string>

namespace acqsim {

// "/CancellationAdvice": checks the advice (its header after the body, and
// TxRef before TxDtTm) and approves it when it names an approved
// authorisation of the same merchant, not yet cancelled, by its RcptTxId,
// InitrTxId, TxRef and amount. Anything else, a repeated cancellation
// included, is declined.
class CancellationHandler {
public:
    CancellationHandler(const MerchantDirectory& merchants, SimState& state);

    SimReply handle(const std::string& body);

private:
    const MerchantDirectory& merchants_;
    SimState& state_;
};

} // namespace acqsim
