#include "testing/KVRProcess.h"

#include "testing/KVRTempDirectory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <utility>
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

// The parent's environment with the given NAME=value entries replacing theirs
// and "PREFIX*" entries dropping theirs; built before fork because the child
// may only make async-signal-safe calls.
std::vector<std::string> mergedEnvironment(const std::vector<std::string>& overrides) {
    std::vector<std::string> merged;
    std::vector<std::string> settings;
    for (char** e = environ; e && *e; ++e) {
        std::string entry(*e);
        std::string name = entry.substr(0, entry.find('='));
        bool replaced = false;
        for (const auto& o : overrides) {
            if (!o.empty() && o.back() == '*') replaced = replaced || name.compare(0, o.size() - 1, o, 0, o.size() - 1) == 0;
            else replaced = replaced || o.compare(0, name.size() + 1, name + "=") == 0;
        }
        if (!replaced) merged.push_back(entry);
    }
    for (const auto& o : overrides)
        if (o.empty() || o.back() != '*') merged.push_back(o);
    return merged;
}

}  // namespace

std::vector<std::string> KVRProcess::Result::errorLines() const {
    std::vector<std::string> lines;
    std::istringstream in(err);
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    return lines;
}

KVRProcess::KVRProcess(const std::string& program, const std::vector<std::string>& arguments, Options options) {
    int pipeFds[2];
    if (pipe2(pipeFds, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    auto args = argv(program, arguments);
    std::vector<std::string> envStrings = mergedEnvironment(options.environment);
    std::vector<char*> envp;
    for (auto& e : envStrings) envp.push_back(e.data());
    envp.push_back(nullptr);
    int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
    int errors = -1;
    if (options.captureErrors) {
        errorDirectory_ = std::make_unique<KVRTempDirectory>();
        errors = open(errorDirectory_->file("stderr").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    }
    pid_ = fork();
    if (pid_ < 0) throw std::runtime_error("fork failed");
    if (pid_ == 0) {
        dup2(input, STDIN_FILENO);
        dup2(pipeFds[1], STDOUT_FILENO);
        if (errors >= 0) dup2(errors, STDERR_FILENO);
        setpgid(0, 0);
        execve(program.c_str(), args.data(), envp.data());
        _exit(127);
    }
    close(input);
    if (errors >= 0) close(errors);
    close(pipeFds[1]);
    out_ = pipeFds[0];
}

KVRProcess::~KVRProcess() {
    stop(std::chrono::milliseconds(500));
    if (out_ >= 0) close(out_);
}

KVRProcess::Result KVRProcess::run(const std::string& program, const std::vector<std::string>& arguments,
                                   Options options, std::chrono::milliseconds timeout) {
    options.captureErrors = true;
    return KVRProcess(program, arguments, std::move(options)).finish(timeout);
}

bool KVRProcess::readMore(std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0 || out_ < 0) return false;
        pollfd p{out_, POLLIN, 0};
        int ready = poll(&p, 1, static_cast<int>(left));
        if (ready < 0 && errno == EINTR) continue;
        if (ready <= 0) return false;
        char buffer[4096];
        ssize_t n = read(out_, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            close(out_);
            out_ = -1;
            return false;
        }
        pending_.append(buffer, static_cast<size_t>(n));
        return true;
    }
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
        if (!readMore(deadline)) {
            if (out_ >= 0 || pending_.empty()) return std::nullopt;
            return std::exchange(pending_, std::string());
        }
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

std::string KVRProcess::errors() const {
    return errorDirectory_ ? errorDirectory_->read("stderr") : std::string();
}

void KVRProcess::signal(int number) {
    if (pid_ > 0 && !status_) ::kill(pid_, number);
}

KVRProcess::Result KVRProcess::finish(std::chrono::milliseconds timeout) {
    auto deadline = Clock::now() + timeout;
    while (readMore(deadline)) {
    }
    Result result;
    result.out = std::exchange(pending_, std::string());
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    auto exited = out_ < 0 ? wait(std::max(left, std::chrono::milliseconds(0))) : std::nullopt;
    if (exited) {
        result.exitCode = *exited;
    } else {
        kill();
    }
    result.err = errors();
    return result;
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

void KVRProcess::kill() {
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
    wait(std::chrono::milliseconds(5000));
}

int KVRProcess::stop(std::chrono::milliseconds grace) {
    if (status_) return *status_;
    if (pid_ <= 0) return -1;
    ::kill(pid_, SIGTERM);
    if (auto s = wait(grace)) return *s;
    kill();
    return status_ ? *status_ : -1;
}
