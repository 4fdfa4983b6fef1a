#pragma once

#include "Host/Messages/KVRAcceptorCancellationAdvice.h"

#include <memory>
#include <optional>
#include <string>

class KVRTransactionModel;

/// What names the sale an advice voids.
struct KVRCancellationKeys {
    std::optional<std::string> saleAffiliationKey;
    std::optional<std::string> receiptTransactionKey;  // RcptTxId; none when the host's answer never came
    std::optional<std::string> initiatorTransactionKey;
    std::optional<std::string> reference;  // TxRef
    std::optional<std::string> amount;     // TtlAmt

    static KVRCancellationKeys of(const KVRTransactionModel& transaction);
};

/// Builds the advice that voids a stored, approved sale. No card and no PIN
/// travel: the sale is named by the keys its authorisation exchange produced.
class KVRAcceptorCancellationAdviceBuilder {
public:
    KVRAcceptorCancellationAdviceBuilder() = delete;

    static std::shared_ptr<KVRAcceptorCancellationAdvice> createCancellationFactoryWithTransaction(
        const KVRTransactionModel& transaction);
    /// The same advice from the keys alone, for a sale no longer (or not yet) stored.
    static std::shared_ptr<KVRAcceptorCancellationAdvice> createCancellationWithKeys(const KVRCancellationKeys& keys);
};
