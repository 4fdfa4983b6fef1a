#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRValidationProvider.h>

#include "Persistence/KVRJournal.h"
#include "Persistence/KVRTransactionStatus.h"
#include "Platform/KVRProcessInfo.h"
#include "Transactions/KVRRecoveryScheduler.h"
#include "Transactions/KVRReversalController.h"
#include "Utils/KVRClock.h"

namespace {

void complete(const KVRCompletion& block, bool success, std::optional<KVRError> error) {
    if (block) block(success, std::move(error));
}

// A record deleted from the store can no longer be cancelled either.
bool isCancellable(const std::shared_ptr<KVRTransactionModel>& transaction) {
    return transaction && !transaction->isDeleted() && transaction->status() == KVRTransactionStatusApproved;
}

KVRJournalEntry cancellationEntry(const KVRTransactionModel& transaction) {
    KVRJournalEntry entry;
    entry.kind = KVRJournalEntry::Kind::Cancellation;
    entry.state = KVRJournalEntry::kCancellationPending;
    entry.date = KVRClock::now();
    entry.initiatorTransactionKey = transaction.initiatorTransactionKey().value_or("");
    entry.reference = transaction.reference();
    if (auto amount = transaction.amount()) entry.amount = amount->description();
    if (auto merchant = transaction.merchant()) entry.merchantKey = merchant->saleAffiliationKey();
    entry.receiptTransactionKey = transaction.receiptTransactionKey();
    entry.authorisationCode = transaction.authorisationCode();
    entry.processIdentifier = KVRProcessInfo::currentIdentifier();
    return entry;
}

// The advice is journalled before it goes, so that an answer lost on the way
// is asked for again; the record becomes cancelled with the journal's entry.
void cancel(const std::shared_ptr<KVRTransactionModel>& transaction, const KVRCompletion& block) {
    KVRRecoveryScheduler::runNow();
    // Finished by the recovery: an earlier answer was lost.
    if (transaction->status() == KVRTransactionStatusCancelled) {
        complete(block, true, std::nullopt);
        return;
    }
    KVRJournalEntry entry = cancellationEntry(*transaction);
    if (!KVRJournal::append(entry)) {
        complete(block, false, KVRErrors::transactionFailed());
        return;
    }
    KVRReversalController::hold(entry.identifier);
    auto verdict = KVRReversalController::sendAdvice(entry, transaction);
    KVRReversalController::release(entry.identifier);
    if (entry.state == KVRJournalEntry::kCancellationPending) KVRRecoveryScheduler::scheduleRetry();
    bool success = verdict.outcome == KVRAdviceOutcome::Approved;
    if (success && transaction->isDeleted()) {
        KVRLoggingUtil::printLog("Cancelled at the acquirer; the transaction record is no longer stored");
    }
    complete(block, success, verdict.error);
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
    KVRRecoveryScheduler::libraryUsed();
    KVRQueues::global(KVRQueuePriority::High).async([transaction, block = std::move(block)] { cancel(transaction, block); });
}
