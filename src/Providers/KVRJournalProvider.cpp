#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionListProvider.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVRJournal.h"
#include "Transactions/KVRRecoveryScheduler.h"
#include "Transactions/KVRReversalController.h"

namespace {

KVRJournalEntry withRecord(KVRJournalEntry entry) {
    entry.transaction = KVRJournal::transactionOf(entry);
    return entry;
}

// A sale stored without reaching the acquirer (declined by the card) has no
// journal entry; it is shown as one with nothing owed.
KVRJournalEntry entryOfRecord(const std::shared_ptr<KVRTransactionModel>& record) {
    KVRJournalEntry entry;
    entry.state = KVRJournalEntry::kSettled;
    entry.date = record->date().value_or(std::chrono::system_clock::time_point());
    entry.initiatorTransactionKey = record->initiatorTransactionKey().value_or("");
    entry.reference = record->reference();
    if (auto amount = record->amount()) entry.amount = amount->description();
    entry.result = record->status();
    entry.transaction = record;
    return entry;
}

}  // namespace

std::optional<KVRJournalEntry> KVRJournalProvider::lastTransaction() {
    auto latest = KVRJournal::latest(KVRJournalEntry::Kind::Authorisation);
    auto records = KVRTransactionListProvider::listTransactions();
    auto newest = records.empty() ? nullptr : records.front();
    bool recordIsNewer = newest && newest->date() &&
                         (!latest || (*newest->date() > latest->date &&
                                      newest->initiatorTransactionKey() != latest->initiatorTransactionKey));
    if (recordIsNewer) return entryOfRecord(newest);
    if (!latest) return std::nullopt;
    return withRecord(*latest);
}

KVRJournalProvider::Entries KVRJournalProvider::pendingReversals() {
    Entries entries;
    for (auto& entry : KVRJournal::unfinished()) entries.push_back(withRecord(std::move(entry)));
    return entries;
}

void KVRJournalProvider::recover(std::function<void(Entries entries)> block) {
    KVRQueues::global(KVRQueuePriority::Background).async([block = std::move(block)] {
        Entries entries;
        for (auto& entry : KVRRecoveryScheduler::runNow()) entries.push_back(withRecord(std::move(entry)));
        if (block) block(std::move(entries));
    });
}

bool KVRJournalProvider::isExchangeInFlight() { return KVRReversalController::holdsAny(); }
