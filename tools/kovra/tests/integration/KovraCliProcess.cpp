#include "KovraCliProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

std::vector<std::string> childEnvironment(const std::vector<std::string>& overrides) {
    std::vector<std::string> entries;
    for (char** entry = environ; entry && *entry; ++entry) {
        std::string text = *entry;
        if (text.rfind("KOVRA_", 0) == 0) continue;
        std::string name = text.substr(0, text.find('=') + 1);
        bool replaced = false;
        for (const auto& override : overrides) replaced = replaced || override.rfind(name, 0) == 0;
        if (!replaced) entries.push_back(text);
    }
    entries.insert(entries.end(), overrides.begin(), overrides.end());
    return entries;
}

void closeFd(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

}  // namespace

std::vector<std::string> KovraCliResult::errorLines() const {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < err.size()) {
        size_t end = err.find('\n', start);
        if (end == std::string::npos) end = err.size();
        if (end > start) lines.push_back(err.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

KovraCliProcess::KovraCliProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                                 const std::string& binary) {
    int out[2];
    int err[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err[1], STDERR_FILENO);

    std::string program = binary;
    std::vector<char*> argv{program.data()};
    std::vector<std::string> args = arguments;
    for (auto& argument : args) argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::vector<std::string> env = childEnvironment(environment);
    std::vector<char*> envp;
    for (auto& entry : env) envp.push_back(entry.data());
    envp.push_back(nullptr);

    int failed = posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    ::close(err[1]);
    out_ = out[0];
    err_ = err[0];
    if (failed != 0) {
        pid_ = -1;
        throw std::runtime_error("cannot start " + program);
    }
}

KovraCliProcess::~KovraCliProcess() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    closeFd(out_);
    closeFd(err_);
}

bool KovraCliProcess::pump(std::chrono::steady_clock::time_point deadline) {
    pollfd fds[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
    if (out_ < 0 && err_ < 0) return false;
    auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    int ready = ::poll(fds, 2, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) return true;
    if (ready <= 0) return false;
    int* streams[2] = {&out_, &err_};
    std::string* buffers[2] = {&result_.out, &result_.err};
    for (int i = 0; i < 2; ++i) {
        if (*streams[i] < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
        char buffer[4096];
        ssize_t count = ::read(*streams[i], buffer, sizeof buffer);
        if (count > 0) {
            buffers[i]->append(buffer, static_cast<size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            closeFd(*streams[i]);
        }
    }
    return true;
}

bool KovraCliProcess::waitForOutput(const std::string& text, std::chrono::milliseconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (result_.out.find(text) == std::string::npos) {
        if (out_ < 0 || !pump(deadline)) return false;
    }
    return true;
}

void KovraCliProcess::interrupt(int signal) {
    if (pid_ > 0) ::kill(pid_, signal);
}

KovraCliResult KovraCliProcess::finish(std::chrono::milliseconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (pump(deadline)) {
    }
    if (out_ >= 0 || err_ >= 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
        result_.exitCode = -1;
        return result_;
    }
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    result_.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result_;
}

KovraCliResult runKovra(const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
                        std::chrono::milliseconds timeout) {
    return KovraCliProcess(arguments, environment).finish(timeout);
}
