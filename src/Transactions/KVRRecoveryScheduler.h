#pragma once

#include <kovra/KVRJournalEntry.h>

#include <vector>

/// When the journal's unfinished work is retried: once in the background
/// when the library is first used in a process, at the start of every
/// provider call that reaches the network (before its own work), and, while
/// work is left, on a timer that backs off from "Kovra Recovery Interval"
/// seconds (30 when absent) to ten minutes.
class KVRRecoveryScheduler {
public:
    KVRRecoveryScheduler() = delete;

    /// The first call in a process starts a recovery in the background.
    static void libraryUsed();
    /// Recovers now on the calling thread; arms or disarms the timer by what is left.
    static std::vector<KVRJournalEntry> runNow();
    /// Arms the timer for work left outside a recovery (an advice that failed).
    static void scheduleRetry();
};
