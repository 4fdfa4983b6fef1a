#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>

/// Ctrl-C (and SIGTERM) always end the tool, whichever thread is waiting on
/// the library: the signals are blocked in every thread and taken by one
/// watcher thread, which runs the registered clean-ups (stopping emulators,
/// removing a temporary directory) newest first and exits with 130.
class KovraInterrupts {
public:
    using Cleanup = std::function<void()>;
    using Token = std::uint64_t;

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

private:
    [[noreturn]] void watch();
    Cleanup take(Token token);

    std::mutex mutex_;
    std::map<Token, Cleanup> cleanups_;
    Token next_ = 1;
};
