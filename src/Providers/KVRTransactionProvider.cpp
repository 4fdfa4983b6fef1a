#include <kovra/KVRTransactionProvider.h>

#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRValidationProvider.h>

#include "Persistence/KVRJournal.h"
#include "Persistence/KVRTransactionStatus.h"
#include "Pinpad/KVRDisplayText.h"
#include "Transactions/KVRRecoveryScheduler.h"
#include "Transactions/KVRReversalController.h"
#include "Transactions/KVRTransactionController.h"

#include <climits>

namespace {

constexpr long long kMinimumAmount = 10;
constexpr long long kMaximumAmount = 999999999999;  // twelve digits: the widest amount the card and host take
constexpr size_t kShortNameLimit = 16;

struct Instalments {
    int amount;
    int type;
};

// Code 0 is a single payment; 1 to 11 are 2 to 12 instalments financed by the
// merchant (type 1); 12 and above are code - 10 instalments financed by the
// issuer (type 2).
Instalments instalmentsFor(unsigned code) {
    if (code == 0) return {0, 0};
    if (code <= 11) return {static_cast<int>(code) + 1, 1};
    long long count = static_cast<long long>(code) - 10;
    return {static_cast<int>(count > INT_MAX ? INT_MAX : count), 2};
}

// The entry checks, in their fixed order; the first that fails is reported.
std::optional<KVRError> preconditionError(const KVRTransactionModel& transaction) {
    long long amount = transaction.amount() ? transaction.amount()->longLongValue() : 0;
    if (amount < kMinimumAmount || amount > kMaximumAmount) return KVRErrors::invalidAmount();
    auto shortName = transaction.shortName();
    if (shortName && KVRDisplayText::characterCount(*shortName) > kShortNameLimit) {
        return KVRErrors::numberOfCharactersExceededForShortName();
    }
    if (!KVRValidationProvider::validateConnectionToNetWork()) return KVRErrors::notConnectedToNetwork();
    if (!KVRValidationProvider::validateActivation()) return KVRErrors::missingKovracodeActivation();
    if (!KVRValidationProvider::validatePinpadConnection()) return KVRErrors::pinpadConnectionNotFound();
    return std::nullopt;
}

std::optional<KVRError> errorForResult(int result) {
    switch (result) {
        case KVRTransactionStatusUnknown: return KVRErrors::genericError();
        case KVRTransactionStatusDeclined:
        case KVRTransactionStatusPartlyApproved:  // a partial approval is reported as a rejection
        case KVRTransactionStatusTechnicalError: return KVRErrors::transactionRejected();
        case KVRTransactionStatusCancelled: return KVRErrors::transactionAutoCancel();
        case KVRTransactionStatusInvalid: return KVRErrors::invalidTransaction();
        case KVRTransactionStatusTimeout: return KVRErrors::transactionTimeout();
        case KVRTransactionStatusFailure: return KVRErrors::transactionFailed();
        case KVRTransactionStatusAborted: return KVRErrors::operationCancelledByUser();
        default: return std::nullopt;
    }
}

int runSale(KVRTransactionController& controller, const std::shared_ptr<KVRTransactionModel>& transaction) {
    try {
        return controller.sendTransaction(transaction);
    } catch (const std::exception& exception) {
        KVRLoggingUtil::printLog(std::string("The sale ended with an exception: ") + exception.what());
        return KVRTransactionStatusUnknown;
    }
}

// Declined, partly approved and cancelled sales stay in the store; invalid,
// timed-out, failed and aborted ones leave nothing, not even the PIN pad
// record made for them. The journal entry is settled in the same save.
bool keepOrDelete(const std::shared_ptr<KVRTransactionModel>& transaction, int result, KVRJournalEntry* entry) {
    std::vector<std::shared_ptr<KVRManagedObject>> deletions;
    if (result >= KVRTransactionStatusInvalid) {
        deletions.push_back(transaction);
        if (auto pinpad = transaction->pinpad()) deletions.push_back(pinpad);
    }
    if (entry) KVRReversalController::settle(*entry, result, deletions.empty());
    return KVRJournal::commit(entry, deletions);
}

// Ends the sale in the store and the journal: an approval that cannot be
// kept is reported as a failure and undone. Returns the result reported.
int finishSale(KVRTransactionController& controller, const std::shared_ptr<KVRTransactionModel>& transaction, int result) {
    auto& entry = controller.journalEntry();
    KVRJournalEntry* settled = entry ? &*entry : nullptr;
    std::string answered = entry ? entry->state : std::string();
    transaction->setStatus(result);
    if (!keepOrDelete(transaction, result, settled) && result == KVRTransactionStatusApproved) {
        KVRLoggingUtil::printLog("The approved sale could not be saved; it is undone and reported as failed");
        result = KVRTransactionStatusFailure;
        transaction->setStatus(result);
        if (entry) entry->state = answered;  // settled again, now as a sale that failed
        keepOrDelete(transaction, result, settled);
    }
    if (!entry) return result;
    bool retry = entry->state == KVRJournalEntry::kReversalPending;
    if (entry->state == KVRJournalEntry::kReversalPending && entry->attempts == 0) {
        auto verdict = KVRReversalController::sendAdvice(*entry);
        retry = verdict.outcome != KVRAdviceOutcome::Approved && verdict.outcome != KVRAdviceOutcome::Declined;
    }
    // Held until its advice is answered: a recovery pass would otherwise send
    // a second one, and an interrupted tool would leave before the answer is
    // written down.
    KVRReversalController::release(entry->identifier);
    if (retry) KVRRecoveryScheduler::scheduleRetry();
    return result;
}

void report(const KVRTransactionProvider::SaleCompletion& block, int result,
            const std::shared_ptr<KVRTransactionModel>& transaction) {
    if (result < 0 || result > KVRTransactionStatusAborted) return;  // no such outcome: nothing to say
    auto record = result < KVRTransactionStatusInvalid ? transaction : nullptr;
    KVRQueues::deliverOnMain([block, result, record] {
        if (result == KVRTransactionStatusApproved) {
            block(true, std::nullopt, record);
        } else {
            block(false, errorForResult(result), record);
        }
    });
}

// The sale itself runs on the main worker, one at a time with every other PIN
// pad exchange; a background task hands it over and waits for it. What the
// journal owes from earlier goes first.
void startSale(const std::shared_ptr<KVRTransactionModel>& transaction, KVRTransactionProvider::SaleCompletion block) {
    KVRRecoveryScheduler::libraryUsed();
    KVRQueues::global(KVRQueuePriority::Background).async([transaction, block = std::move(block)] {
        KVRQueues::main().sync([&transaction, &block] {
            KVRRecoveryScheduler::runNow();
            KVRTransactionController controller;
            int result = finishSale(controller, transaction, runSale(controller, transaction));
            report(block, result, transaction);
        });
    });
}

// The original entries hear only success and error.
KVRTransactionProvider::SaleCompletion withoutRecord(KVRCompletion block) {
    return [block = std::move(block)](bool success, std::optional<KVRError> error, const auto&) {
        block(success, std::move(error));
    };
}

}  // namespace

void KVRTransactionProvider::sendTransactionWithValue(long long value, unsigned transactionTypeSimplified,
                                                      unsigned instalmentTransaction, const std::string& transactionId,
                                                      KVRCompletion block) {
    sendTransactionWithValueReturningRecord(value, transactionTypeSimplified, instalmentTransaction, transactionId,
                                            withoutRecord(std::move(block)));
}

void KVRTransactionProvider::sendTransactionWithValueReturningRecord(long long value, unsigned transactionTypeSimplified,
                                                                     unsigned instalmentTransaction,
                                                                     const std::string& transactionId,
                                                                     SaleCompletion block) {
    (void)transactionId;  // accepted for the application's sake; neither stored nor sent
    auto transaction = KVRTransactionModel::create();
    Instalments instalments = instalmentsFor(instalmentTransaction);
    transaction->setInstalmentAmount(instalments.amount);
    transaction->setInstalmentType(instalments.type);
    transaction->setType(static_cast<int>(transactionTypeSimplified));
    transaction->setAmount(KVRNumber(value));
    // A sale that never starts must not leave its new record in the context,
    // where the next save anywhere would write it.
    if (auto error = preconditionError(*transaction)) {
        transaction->deleteRecord();
        block(false, error, nullptr);
        return;
    }
    startSale(transaction, std::move(block));
}

void KVRTransactionProvider::sendTransactionWithValueOrderIdentification(long long value,
                                                                         unsigned transactionTypeSimplified,
                                                                         unsigned instalmentTransaction,
                                                                         const std::string& orderIdentification,
                                                                         KVRCompletion block) {
    sendTransactionWithValue(value, transactionTypeSimplified, instalmentTransaction, orderIdentification,
                             [block = std::move(block)](bool success, std::optional<KVRError> error) {
                                 block(success, std::move(error));
                             });
}

void KVRTransactionProvider::sendTransaction(const std::shared_ptr<KVRTransactionModel>& transaction,
                                             KVRCompletion block) {
    sendTransactionReturningRecord(transaction, withoutRecord(std::move(block)));
}

void KVRTransactionProvider::sendTransactionReturningRecord(const std::shared_ptr<KVRTransactionModel>& transaction,
                                                           SaleCompletion block) {
    std::optional<KVRError> error =
        transaction ? preconditionError(*transaction) : std::optional<KVRError>(KVRErrors::invalidAmount());
    if (error) {
        block(false, error, nullptr);
        return;
    }
    startSale(transaction, std::move(block));
}
