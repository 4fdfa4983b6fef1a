#pragma once

#include "Host/Messages/KVRAcceptorCancellationAdvice.h"

#include <memory>

class KVRTransactionModel;

/// Builds the advice that voids a stored, approved sale. No card and no PIN
/// travel: the sale is named by the keys its authorisation exchange produced.
class KVRAcceptorCancellationAdviceBuilder {
public:
    KVRAcceptorCancellationAdviceBuilder() = delete;

    static std::shared_ptr<KVRAcceptorCancellationAdvice> createCancellationFactoryWithTransaction(
        const KVRTransactionModel& transaction);
};
