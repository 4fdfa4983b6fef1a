#include "SimProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace {

constexpr int kReadyTimeoutMs = 20000;
constexpr auto kStopTimeout = std::chrono::seconds(10);
constexpr const char* kReadyPrefix = "kovra-acquirer-sim ready at ";

std::vector<char*> argvOf(std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return argv;
}

// Spawns the binary with its standard output (and, when given, standard
// error) on pipes.
pid_t spawn(std::vector<std::string> arguments, int outFd, int errFd) {
    arguments.insert(arguments.begin(), KOVRA_ACQUIRER_SIM_BINARY);
    std::vector<char*> argv = argvOf(arguments);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outFd, STDOUT_FILENO);
    if (errFd >= 0) {
        posix_spawn_file_actions_adddup2(&actions, errFd, STDERR_FILENO);
    }
    pid_t pid = -1;
    int failed = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) {
        throw std::runtime_error("cannot start " + std::string(argv[0]));
    }
    return pid;
}

int statusOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int waitFor(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return statusOf(status);
}

// Waits up to `timeout` for the child to end; kills it after that.
int waitOrKill(pid_t pid, std::chrono::milliseconds timeout) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return kStopTimedOut;
        }
        poll(nullptr, 0, 5);
    }
    return statusOf(status);
}

std::string drain(int fd) {
    std::string text;
    char buffer[4096];
    ssize_t n;
    while ((n = read(fd, buffer, sizeof buffer)) > 0) {
        text.append(buffer, static_cast<size_t>(n));
    }
    return text;
}

} // namespace

SimProcess::SimProcess(std::filesystem::path stateDirectory, std::vector<std::string> extraArguments)
    : stateDirectory_(std::move(stateDirectory)) {
    std::vector<std::string> arguments{"--port", "0", "--state", stateDirectory_.string()};
    arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
    int out[2];
    if (pipe(out) != 0) {
        throw std::runtime_error("pipe failed");
    }
    // The emulator echoes its request log on standard error; keep it out of the test output.
    int errors = open("/dev/null", O_WRONLY);
    pid_ = spawn(arguments, out[1], errors);
    close(errors);
    close(out[1]);
    try {
        readReadyLines(out[0]);
    } catch (...) {
        close(out[0]);
        kill(pid_, SIGKILL);
        waitFor(pid_);
        pid_ = -1;
        throw;
    }
    close(out[0]);
}

SimProcess::~SimProcess() {
    if (pid_ > 0) {
        stop();
    }
}

void SimProcess::readReadyLines(int fd) {
    std::string text;
    auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kReadyTimeoutMs);
    while (std::count(text.begin(), text.end(), '\n') < 2) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting{fd, POLLIN, 0};
        if (left.count() <= 0 || poll(&waiting, 1, static_cast<int>(left.count())) <= 0) {
            throw std::runtime_error("the emulator did not get ready; it printed: " + text);
        }
        char buffer[512];
        ssize_t n = read(fd, buffer, sizeof buffer);
        if (n <= 0) {
            throw std::runtime_error("the emulator exited before it was ready; it printed: " + text);
        }
        text.append(buffer, static_cast<size_t>(n));
    }
    std::istringstream lines(text);
    std::getline(lines, readyLine_);
    std::getline(lines, caLine_);
    if (readyLine_.rfind(kReadyPrefix, 0) != 0 || caLine_.rfind("ca: ", 0) != 0) {
        throw std::runtime_error("unexpected ready lines: " + text);
    }
    baseUrl_ = readyLine_.substr(std::string(kReadyPrefix).size());
    caFile_ = caLine_.substr(4);
}

std::vector<std::string> SimProcess::requestLog() const {
    std::ifstream in(stateDirectory_ / "requests.log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

int SimProcess::stop() {
    if (pid_ <= 0) {
        return -1;
    }
    kill(pid_, SIGTERM);
    int status = waitOrKill(pid_, kStopTimeout);
    pid_ = -1;
    return status;
}

SimProcess::Finished SimProcess::runToCompletion(const std::vector<std::string>& arguments) {
    int out[2];
    int err[2];
    if (pipe(out) != 0 || pipe(err) != 0) {
        throw std::runtime_error("pipe failed");
    }
    pid_t pid = spawn(arguments, out[1], err[1]);
    close(out[1]);
    close(err[1]);
    // Short outputs only (help text, errors): the pipes never fill up.
    int status = waitFor(pid);
    Finished finished{status, drain(out[0]), drain(err[0])};
    close(out[0]);
    close(err[0]);
    return finished;
}
