#pragma once

#include <kovra/KVRCompletion.h>

#include <memory>

class KVRTransactionModel;

/// One cancellation advice for an approved sale and the acquirer's verdict.
/// Leaves the stored record alone: the caller marks it cancelled.
class KVRCancellationController {
public:
    /// Blocks for the host exchange; the block is called once.
    void sendCancellationWithTransaction(const std::shared_ptr<KVRTransactionModel>& transaction,
                                         const KVRCompletion& block);
};
