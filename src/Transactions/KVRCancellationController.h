#pragma once

#include <kovra/KVRCompletion.h>

#include "Host/Messages/KVRAcceptorCancellationAdviceBuilder.h"

#include <memory>
#include <optional>

class KVRTransactionModel;

/// How the acquirer took a cancellation advice. Only an approval or a decline
/// in a readable answer is final; anything else may not have reached it.
enum class KVRAdviceOutcome { Approved, Declined, PartOrTechnical, Unreadable, NoAnswer };

/// One cancellation advice for an approved sale and the acquirer's verdict.
/// Leaves the stored record alone: the caller marks it cancelled.
class KVRCancellationController {
public:
    struct Verdict {
        KVRAdviceOutcome outcome;
        /// The catalogue error the application hears; none when approved.
        std::optional<KVRError> error;
    };

    /// Blocks for the host exchange; the block is called once.
    void sendCancellationWithTransaction(const std::shared_ptr<KVRTransactionModel>& transaction,
                                         const KVRCompletion& block);
    /// The same exchange for a sale named by its keys alone.
    Verdict sendCancellationWithKeys(const KVRCancellationKeys& keys);
};
