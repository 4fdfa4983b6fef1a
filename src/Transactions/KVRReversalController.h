#pragma once

#include <kovra/KVRJournalEntry.h>

#include "Transactions/KVRCancellationController.h"

#include <cstdint>
#include <memory>
#include <vector>

class KVRTransactionModel;

/// Sends the cancellation advices the journal owes: reversals of
/// authorisations the host approved, or may have approved, that did not end
/// as a stored approved sale, and cancellations whose answer was lost. An
/// advice is counted in the journal before it is posted; the entry is
/// finished only by a readable approval (reversed, cancelled: the stored
/// record says cancelled too) or decline (refused). Anything else leaves it
/// pending for the next attempt, and the acquirer answers a repeated advice
/// for a cancelled sale with an approval.
class KVRReversalController {
public:
    KVRReversalController() = delete;

    /// One advice for the entry now. `transaction` is its stored sale when the
    /// caller holds it; otherwise the journal finds it.
    static KVRCancellationController::Verdict sendAdvice(KVRJournalEntry& entry,
                                                         std::shared_ptr<KVRTransactionModel> transaction = nullptr);

    /// One attempt at every unfinished entry that no running sale or
    /// cancellation holds, oldest first: an answer never stored becomes a
    /// reversal when the host approved or may have approved. Returns the
    /// entries acted on, as they ended. One recovery runs at a time.
    static std::vector<KVRJournalEntry> recoverNow();

    /// What a sale ended as decides what the journal owes: nothing once the
    /// host declined, or once an approval ends stored as approved; a reversal
    /// otherwise. Entries already reversing are left as they are.
    static void settle(KVRJournalEntry& entry, int result, bool stored);

    /// Entries of this process still being worked on: recovery leaves them alone.
    static void hold(std::int64_t identifier);
    static void release(std::int64_t identifier);
    /// True while this process holds an entry whose host exchange is not settled.
    static bool holdsAny();
};
