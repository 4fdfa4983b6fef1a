#include "KovraInterrupts.h"

#include <csignal>
#include <cstdio>
#include <iterator>
#include <thread>
#include <unistd.h>

namespace {

sigset_t stopSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGHUP);
    return set;
}

}  // namespace

KovraInterrupts::KovraInterrupts() {
    sigset_t set = stopSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::thread([this] { watch(); }).detach();
}

KovraInterrupts::Token KovraInterrupts::add(Cleanup cleanup) {
    std::lock_guard lock(mutex_);
    cleanups_.emplace(next_, std::move(cleanup));
    return next_++;
}

void KovraInterrupts::remove(Token token) { take(token); }

void KovraInterrupts::runNow(Token token) {
    if (Cleanup cleanup = take(token)) cleanup();
}

KovraInterrupts::DrainGuard::DrainGuard(KovraInterrupts& interrupts, Drain drain) : interrupts_(interrupts) {
    std::lock_guard lock(interrupts_.mutex_);
    interrupts_.drain_ = std::move(drain);
}

KovraInterrupts::DrainGuard::~DrainGuard() {
    std::lock_guard lock(interrupts_.mutex_);
    interrupts_.drain_ = {};
}

// Waits while the payment is busy, until a second signal.
void KovraInterrupts::drainPayment(const sigset_t& signals) {
    Drain drain;
    {
        std::lock_guard lock(mutex_);
        drain = drain_;
    }
    if (!drain.busy) return;
    if (drain.stop) drain.stop();
    if (!drain.busy()) return;
    const char message[] = "kovra: finishing the payment with the acquirer (interrupt again to leave it to the next run)\n";
    (void)!::write(STDERR_FILENO, message, sizeof message - 1);
    const timespec pause{0, 50 * 1000 * 1000};
    while (drain.busy()) {
        if (sigtimedwait(&signals, nullptr, &pause) > 0) return;
    }
}

int KovraInterrupts::exitCode(int code) const {
    while (interrupted_) pause();
    return code;
}

KovraInterrupts::Cleanup KovraInterrupts::take(Token token) {
    std::lock_guard lock(mutex_);
    auto it = cleanups_.find(token);
    if (it == cleanups_.end()) return {};
    Cleanup cleanup = std::move(it->second);
    cleanups_.erase(it);
    return cleanup;
}

// The clean-ups run on this thread while the others may still be blocked in
// the library; the process then ends without running static destructors,
// which those threads could still be using.
void KovraInterrupts::watch() {
    sigset_t set = stopSignals();
    int received = 0;
    while (sigwait(&set, &received) != 0) {
    }
    interrupted_ = true;
    const char message[] = "\nkovra: interrupted\n";
    (void)!::write(STDERR_FILENO, message, sizeof message - 1);
    drainPayment(set);
    for (;;) {
        Cleanup cleanup;
        {
            std::lock_guard lock(mutex_);
            if (cleanups_.empty()) break;
            auto newest = std::prev(cleanups_.end());
            cleanup = std::move(newest->second);
            cleanups_.erase(newest);
        }
        try {
            cleanup();
        } catch (...) {
        }
    }
    std::fflush(stdout);
    _exit(kInterruptedExitCode);
}
