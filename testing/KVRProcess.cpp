#include "testing/KVRProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

std::vector<char*> argv(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<char*> out;
    out.push_back(const_cast<char*>(program.c_str()));
    for (const auto& a : arguments) out.push_back(const_cast<char*>(a.c_str()));
    out.push_back(nullptr);
    return out;
}

// The parent's environment with the given NAME=value entries replacing theirs;
// built before fork because the child may only make async-signal-safe calls.
std::vector<std::string> mergedEnvironment(const std::vector<std::string>& overrides) {
    std::vector<std::string> merged;
    for (char** e = environ; e && *e; ++e) {
        std::string entry(*e);
        std::string name = entry.substr(0, entry.find('='));
        bool replaced = false;
        for (const auto& o : overrides) replaced = replaced || o.compare(0, name.size() + 1, name + "=") == 0;
        if (!replaced) merged.push_back(entry);
    }
    merged.insert(merged.end(), overrides.begin(), overrides.end());
    return merged;
}

}  // namespace

KVRProcess::KVRProcess(const std::string& program, const std::vector<std::string>& arguments,
                       const std::vector<std::string>& environment) {
    int pipeFds[2];
    if (pipe2(pipeFds, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    auto args = argv(program, arguments);
    std::vector<std::string> envStrings = mergedEnvironment(environment);
    std::vector<char*> envp;
    for (auto& e : envStrings) envp.push_back(e.data());
    envp.push_back(nullptr);
    pid_ = fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        dup2(pipeFds[1], STDOUT_FILENO);
        setpgid(0, 0);
        execve(program.c_str(), args.data(), envp.data());
        _exit(127);
    }
    close(pipeFds[1]);
    out_ = pipeFds[0];
}

KVRProcess::~KVRProcess() {
    stop(std::chrono::milliseconds(500));
    if (out_ >= 0) close(out_);
}

std::optional<std::string> KVRProcess::readLine(std::chrono::milliseconds timeout) {
    auto deadline = Clock::now() + timeout;
    for (;;) {
        auto nl = pending_.find('\n');
        if (nl != std::string::npos) {
            std::string line = pending_.substr(0, nl);
            pending_.erase(0, nl + 1);
            return line;
        }
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0 || out_ < 0) return std::nullopt;
        pollfd p{out_, POLLIN, 0};
        int ready = poll(&p, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return std::nullopt;
        char buffer[4096];
        ssize_t n = read(out_, buffer, sizeof buffer);
        if (n <= 0) {
            if (!pending_.empty()) {
                std::string rest = pending_;
                pending_.clear();
                return rest;
            }
            return std::nullopt;
        }
        pending_.append(buffer, static_cast<size_t>(n));
    }
}

std::optional<std::string> KVRProcess::waitForLine(const std::string& prefix, std::chrono::milliseconds timeout) {
    auto deadline = Clock::now() + timeout;
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return std::nullopt;
        auto line = readLine(left);
        if (!line) return std::nullopt;
        if (line->compare(0, prefix.size(), prefix) == 0) return line;
    }
}

std::optional<int> KVRProcess::wait(std::chrono::milliseconds timeout) {
    if (status_) return status_;
    if (pid_ <= 0) return std::nullopt;
    auto deadline = Clock::now() + timeout;
    for (;;) {
        int status = 0;
        pid_t r = waitpid(pid_, &status, WNOHANG);
        if (r == pid_) {
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            return status_;
        }
        if (r < 0) return std::nullopt;
        if (Clock::now() >= deadline) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

int KVRProcess::stop(std::chrono::milliseconds grace) {
    if (status_) return *status_;
    if (pid_ <= 0) return -1;
    kill(pid_, SIGTERM);
    if (auto s = wait(grace)) return *s;
    kill(-pid_, SIGKILL);
    kill(pid_, SIGKILL);
    if (auto s = wait(std::chrono::milliseconds(5000))) return *s;
    return -1;
}
