#include "Transactions/KVRReversalController.h"

#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVRJournal.h"
#include "Persistence/KVRTransactionStatus.h"
#include "Platform/KVRProcessInfo.h"

#include <mutex>
#include <set>

namespace {


std::mutex& heldMutex() {
    static auto* mutex = new std::mutex();
    return *mutex;
}

std::set<std::int64_t>& held() {
    static auto* entries = new std::set<std::int64_t>();
    return *entries;
}

bool isHeld(std::int64_t identifier) {
    std::lock_guard lock(heldMutex());
    return held().count(identifier) > 0;
}

std::optional<std::string> nonEmpty(const std::optional<std::string>& text) {
    return text && !text->empty() ? text : std::nullopt;
}

// The host's own reference when it answered; the one the request carried otherwise.
KVRCancellationKeys keysOf(const KVRJournalEntry& entry) {
    KVRCancellationKeys keys;
    keys.saleAffiliationKey = entry.merchantKey;
    keys.receiptTransactionKey = entry.receiptTransactionKey;
    keys.initiatorTransactionKey = entry.initiatorTransactionKey;
    keys.reference = nonEmpty(entry.hostReference) ? entry.hostReference : entry.reference;
    keys.amount = entry.amount;
    return keys;
}

// A record that says approved says cancelled once the acquirer undid it; any
// other stays as the application heard it.
bool marksRecord(const KVRTransactionModel& transaction) {
    return !transaction.isDeleted() && transaction.status() == KVRTransactionStatusApproved;
}

// Entries of a process that still runs are its own business; so are those
// this process is still working on.
bool isOrphan(const KVRJournalEntry& entry) {
    if (entry.processIdentifier == KVRProcessInfo::currentIdentifier()) return !isHeld(entry.identifier);
    return !KVRProcessInfo::isRunning(entry.processIdentifier);
}

std::string describe(const KVRCancellationController::Verdict& verdict) {
    switch (verdict.outcome) {
        case KVRAdviceOutcome::Approved: return "approved";
        case KVRAdviceOutcome::Declined: return "declined";
        case KVRAdviceOutcome::PartOrTechnical: return "answered with a technical or partial code";
        case KVRAdviceOutcome::Unreadable: return "unreadable answer";
        case KVRAdviceOutcome::NoAnswer: break;
    }
    return "no answer";
}

}  // namespace

KVRCancellationController::Verdict KVRReversalController::sendAdvice(KVRJournalEntry& entry,
                                                                     std::shared_ptr<KVRTransactionModel> transaction) {
    bool reversal = entry.kind == KVRJournalEntry::Kind::Authorisation;
    if (reversal) entry.state = KVRJournalEntry::kReversalPending;
    ++entry.attempts;
    // Counted before it goes; sent even when the count cannot be written, as
    // an advice repeated is harmless and one held back may leave money taken.
    KVRJournal::update(entry);
    auto verdict = KVRCancellationController().sendCancellationWithKeys(keysOf(entry));
    KVRLoggingUtil::printLog("Journal entry " + std::to_string(entry.identifier) + ": advice " + describe(verdict));
    switch (verdict.outcome) {
        case KVRAdviceOutcome::Approved:
            entry.state = reversal ? KVRJournalEntry::kReversed : KVRJournalEntry::kCancelled;
            entry.lastError.reset();
            if (!transaction) transaction = KVRJournal::transactionOf(entry);
            if (transaction && marksRecord(*transaction)) transaction->setStatus(KVRTransactionStatusCancelled);
            KVRJournal::commitWithRecord(entry, transaction);
            break;
        case KVRAdviceOutcome::Declined:
            entry.state = reversal ? KVRJournalEntry::kReversalRefused : KVRJournalEntry::kCancellationRefused;
            entry.lastError = describe(verdict);
            KVRJournal::update(entry);
            break;
        default:
            entry.lastError = verdict.error ? verdict.error->localizedDescription() : describe(verdict);
            KVRJournal::update(entry);
    }
    return verdict;
}

void KVRReversalController::settle(KVRJournalEntry& entry, int result, bool stored) {
    if (result >= 0) entry.result = result;
    if (entry.state == KVRJournalEntry::kSent) {
        entry.state = KVRJournalEntry::kReversalPending;  // the host may have approved
    } else if (entry.state == KVRJournalEntry::kAnswered) {
        bool kept = result == KVRTransactionStatusApproved && stored;
        entry.state = entry.hostApproved() && !kept ? KVRJournalEntry::kReversalPending : KVRJournalEntry::kSettled;
    }
}

std::vector<KVRJournalEntry> KVRReversalController::recoverNow() {
    static auto* recovering = new std::mutex();
    std::lock_guard lock(*recovering);
    std::vector<KVRJournalEntry> acted;
    for (auto entry : KVRJournal::unfinished()) {
        if (!isOrphan(entry)) continue;
        settle(entry, -1, false);  // a sale that never ended kept nothing
        if (entry.state == KVRJournalEntry::kSettled) {
            KVRJournal::update(entry);
        } else {
            sendAdvice(entry);
        }
        acted.push_back(entry);
    }
    return acted;
}

void KVRReversalController::hold(std::int64_t identifier) {
    std::lock_guard lock(heldMutex());
    held().insert(identifier);
}

void KVRReversalController::release(std::int64_t identifier) {
    std::lock_guard lock(heldMutex());
    held().erase(identifier);
}

bool KVRReversalController::holdsAny() {
    std::lock_guard lock(heldMutex());
    return !held().empty();
}
