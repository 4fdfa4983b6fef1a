#include "Transactions/KVRRecoveryScheduler.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRQueues.h>

#include "Persistence/KVRJournal.h"
#include "Platform/KVRSettingsKeys.h"
#include "Transactions/KVRReversalController.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr double kDefaultIntervalSeconds = 30;
constexpr double kLongestIntervalSeconds = 600;

// The timer's state; one timer thread for the process, started on first need.
struct Timer {
    std::mutex mutex;
    std::condition_variable changed;
    bool armed = false;
    bool started = false;
    Clock::time_point due;
    double interval = 0;
};

Timer& timer() {
    static auto* shared = new Timer();
    return *shared;
}

double firstInterval() {
    double seconds =
        KVRApplicationInfo::numberForKey(KVRSettingsKeys::kRecoveryInterval).value_or(kDefaultIntervalSeconds);
    return std::clamp(seconds, 0.01, kLongestIntervalSeconds);
}

void waitAndRun() {
    Timer& t = timer();
    for (;;) {
        {
            std::unique_lock lock(t.mutex);
            t.changed.wait(lock, [&t] { return t.armed; });
            if (!t.changed.wait_until(lock, t.due, [&t] { return !t.armed; })) t.armed = false;
            else continue;
        }
        try {
            KVRRecoveryScheduler::runNow();
        } catch (const std::exception& exception) {
            KVRLoggingUtil::printLog(std::string("The journal's recovery failed: ") + exception.what());
        }
    }
}

// Work left: retry later, each time twice as late; nothing left: stop.
void rearm(bool workLeft) {
    Timer& t = timer();
    std::lock_guard lock(t.mutex);
    if (!workLeft) {
        t.armed = false;
        t.interval = 0;
        t.changed.notify_all();
        return;
    }
    t.interval = t.interval == 0 ? firstInterval() : std::min(t.interval * 2, kLongestIntervalSeconds);
    t.due = Clock::now() + std::chrono::duration_cast<Clock::duration>(Seconds(t.interval));
    t.armed = true;
    if (!t.started) {
        t.started = true;
        std::thread(waitAndRun).detach();
    }
    t.changed.notify_all();
}

}  // namespace

void KVRRecoveryScheduler::libraryUsed() {
    static std::once_flag once;
    std::call_once(once, [] { KVRQueues::global(KVRQueuePriority::Background).async([] { runNow(); }); });
}

std::vector<KVRJournalEntry> KVRRecoveryScheduler::runNow() {
    auto acted = KVRReversalController::recoverNow();
    auto left = KVRJournal::unfinished();
    bool workLeft = std::any_of(left.begin(), left.end(), [](const KVRJournalEntry& entry) {
        return entry.state == KVRJournalEntry::kReversalPending || entry.state == KVRJournalEntry::kCancellationPending;
    });
    rearm(workLeft);
    return acted;
}

void KVRRecoveryScheduler::scheduleRetry() { rearm(true); }
