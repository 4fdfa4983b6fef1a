#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRValidationProvider.h>

#include "Transactions/KVRCancellationController.h"

namespace {

constexpr int kApprovedStatus = 2;
constexpr int kCancelledStatus = 5;

void complete(const KVRCompletion& block, bool success, std::optional<KVRError> error) {
    if (block) block(success, std::move(error));
}

// A record deleted from the store can no longer be cancelled either.
bool isCancellable(const std::shared_ptr<KVRTransactionModel>& transaction) {
    return transaction && !transaction->isDeleted() && transaction->status() == kApprovedStatus;
}

void markCancelled(KVRTransactionModel& transaction) {
    if (transaction.isDeleted()) {
        KVRLoggingUtil::printLog("Cancelled at the acquirer; the transaction record is no longer stored");
        return;
    }
    transaction.setStatus(kCancelledStatus);
    transaction.save();
}

void cancel(const std::shared_ptr<KVRTransactionModel>& transaction, const KVRCompletion& block) {
    KVRCancellationController controller;
    controller.sendCancellationWithTransaction(transaction, [&](bool success, std::optional<KVRError> error) {
        if (success) markCancelled(*transaction);
        complete(block, success, std::move(error));
    });
}

}  // namespace

void KVRCancellationProvider::cancelTransaction(const std::shared_ptr<KVRTransactionModel>& transaction,
                                                KVRCompletion block) {
    if (!isCancellable(transaction)) {
        complete(block, false, KVRErrors::transactionAlreadyCancelled());
        return;
    }
    if (!KVRValidationProvider::validateConnectionToNetWork()) {
        complete(block, false, KVRErrors::notConnectedToNetwork());
        return;
    }
    if (!KVRValidationProvider::validateActivation()) {
        complete(block, false, KVRErrors::missingKovracodeActivation());
        return;
    }
    KVRQueues::global(KVRQueuePriority::High).async([transaction, block = std::move(block)] { cancel(transaction, block); });
}
