#include "KovraEmulatorProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace {

using namespace std::chrono_literals;

// The child starts with the signals the tool blocks or ignores back to normal.
void resetSignals(posix_spawnattr_t& attributes) {
    sigset_t none;
    sigemptyset(&none);
    sigset_t defaults;
    sigemptyset(&defaults);
    for (int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) sigaddset(&defaults, signal);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
}

}  // namespace

KovraEmulatorProcess::KovraEmulatorProcess(const std::string& program, const std::vector<std::string>& arguments,
                                           const std::string& errorLog) {
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) throw std::runtime_error(std::string("cannot make a pipe: ") + strerror(errno));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errorLog.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    resetSignals(attributes);

    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    int failed = posix_spawn(&pid_, program.c_str(), &actions, &attributes, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(pipe[1]);
    if (failed != 0) {
        ::close(pipe[0]);
        pid_ = -1;
        throw std::runtime_error("cannot start " + program + ": " + strerror(failed));
    }
    output_ = pipe[0];
}

KovraEmulatorProcess::~KovraEmulatorProcess() {
    stop();
    if (output_ >= 0) ::close(output_);
}

std::optional<std::string> KovraEmulatorProcess::waitForLine(const std::string& prefix,
                                                             std::chrono::milliseconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (auto line = nextLine(deadline)) {
        if (line->rfind(prefix, 0) == 0) return line->substr(prefix.size());
    }
    return std::nullopt;
}

std::optional<std::string> KovraEmulatorProcess::nextLine(std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        if (size_t end = pending_.find('\n'); end != std::string::npos) {
            std::string line = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            return line;
        }
        auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || output_ < 0) return std::nullopt;
        pollfd wait{output_, POLLIN, 0};
        int ready = ::poll(&wait, 1, static_cast<int>(left.count()));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return std::nullopt;
        char buffer[512];
        ssize_t count = ::read(output_, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        pending_.append(buffer, static_cast<size_t>(count));
    }
}

void KovraEmulatorProcess::terminate() {
    std::lock_guard lock(mutex_);
    if (pid_ > 0) ::kill(pid_, SIGTERM);
}

void KovraEmulatorProcess::stop(std::chrono::milliseconds grace) {
    std::lock_guard lock(mutex_);
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    auto deadline = std::chrono::steady_clock::now() + grace;
    int status = 0;
    while (::waitpid(pid_, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, &status, 0);
            break;
        }
        std::this_thread::sleep_for(10ms);
    }
    pid_ = -1;
}
