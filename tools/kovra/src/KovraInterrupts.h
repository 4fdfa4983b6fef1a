#pragma once

#include <atomic>
#include <csignal>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>

/// Ctrl-C (and SIGTERM, SIGHUP) always end the tool, whichever thread is
/// waiting on the library: the signals are blocked in every thread and taken
/// by one watcher thread, which runs the registered clean-ups (stopping
/// emulators, removing a temporary directory) newest first and exits with 130.
/// While a payment is in progress the watcher first lets it finish: it asks
/// it to stop waiting for the cardholder and waits until the journal has
/// settled its exchange with the acquirer; a second signal leaves at once
/// (the journal has it, and the next run finishes it).
class KovraInterrupts {
public:
    using Cleanup = std::function<void()>;
    using Token = std::uint64_t;

    /// What a payment in progress needs before the tool leaves: `stop` asks
    /// it to stop waiting (may be empty), `busy` says it has not settled.
    struct Drain {
        std::function<void()> stop;
        std::function<bool()> busy;
    };

    /// Holds a drain for its lifetime.
    class DrainGuard {
    public:
        DrainGuard(KovraInterrupts& interrupts, Drain drain);
        ~DrainGuard();
        DrainGuard(const DrainGuard&) = delete;
        DrainGuard& operator=(const DrainGuard&) = delete;

    private:
        KovraInterrupts& interrupts_;
    };

    static constexpr int kInterruptedExitCode = 130;

    /// Must run before any other thread exists, so that every thread the
    /// library starts inherits the blocked mask. Also ignores SIGPIPE: a peer
    /// that hangs up must give an error, not end the tool.
    KovraInterrupts();
    KovraInterrupts(const KovraInterrupts&) = delete;
    KovraInterrupts& operator=(const KovraInterrupts&) = delete;

    Token add(Cleanup cleanup);
    void remove(Token token);
    /// Runs (and forgets) the clean-ups of the given token now.
    void runNow(Token token);
    /// The tool's exit code once a command has ended; after a signal the
    /// watcher decides (130), so this waits for it and never returns.
    int exitCode(int code) const;

private:
    [[noreturn]] void watch();
    void drainPayment(const sigset_t& signals);
    Cleanup take(Token token);

    std::mutex mutex_;
    Drain drain_;
    std::atomic<bool> interrupted_ = false;
    std::map<Token, Cleanup> cleanups_;
    Token next_ = 1;
};
