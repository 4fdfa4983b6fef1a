#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRJournalEntry.h>

#include <functional>
#include <optional>
#include <vector>

/// What the journal knows about the money the library moved: the latest sale
/// attempt, the reversals and cancellations the acquirer has not answered,
/// and a way to retry them now. The library retries them by itself as well:
/// in the background when it is first used in a process, before every
/// provider call that reaches the network, and on a timer that backs off from
/// "Kovra Recovery Interval" seconds (30 when absent) to ten minutes.
class KOVRA_API KVRJournalProvider {
public:
    using Entries = std::vector<KVRJournalEntry>;

    KVRJournalProvider() = delete;

    /// The latest sale attempt that reached the acquirer or was stored,
    /// whatever its outcome, with its journal state and its stored record
    /// (none when the sale left no record). None before the first sale.
    static std::optional<KVRJournalEntry> lastTransaction();
    /// Exchanges with work left, oldest first: reversals and cancellations
    /// the acquirer has not answered, and sales that ended before their
    /// answer was kept (each becomes a reversal when recovered).
    static Entries pendingReversals();
    /// Runs the retries now on a background queue; the block gets every
    /// entry acted on, as it ended, on that queue.
    static void recover(std::function<void(Entries entries)> block);
    /// True while a sale or cancellation of this process has an exchange
    /// with the acquirer that its journal has not settled.
    static bool isExchangeInFlight();
};
