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
    const char message[] = "\nkovra: interrupted\n";
    (void)!::write(STDERR_FILENO, message, sizeof message - 1);
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
