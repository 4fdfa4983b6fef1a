#include "KVRSimTestProcess.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

KVRSimTestProcess::KVRSimTestProcess(const std::vector<std::string>& arguments, const std::string& errorFile) {
    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    std::vector<std::string> argv{KOVRA_PINPAD_SIM_BINARY};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (auto& argument : argv) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(pipeEnds[1], STDOUT_FILENO);
        int error = open(errorFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
        dup2(error, STDERR_FILENO);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
    close(pipeEnds[1]);
    output_ = pipeEnds[0];
}

KVRSimTestProcess::~KVRSimTestProcess() {
    if (pid_ > 0) {
        terminate();
    }
    if (output_ >= 0) {
        close(output_);
    }
}

bool KVRSimTestProcess::readMore(std::chrono::milliseconds patience) {
    pollfd descriptor{output_, POLLIN, 0};
    if (poll(&descriptor, 1, static_cast<int>(patience.count())) <= 0) {
        return false;
    }
    char chunk[512];
    ssize_t count = read(output_, chunk, sizeof chunk);
    if (count <= 0) {
        return false;
    }
    buffer_.append(chunk, static_cast<size_t>(count));
    return true;
}

std::string KVRSimTestProcess::waitReady() {
    auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (true) {
        auto end = buffer_.find('\n', consumed_);
        if (end != std::string::npos) {
            std::string line = buffer_.substr(consumed_, end - consumed_);
            consumed_ = end + 1;
            if (line.rfind(kReadyPrefix, 0) == 0) {
                return line.substr(std::string(kReadyPrefix).size());
            }
            continue;
        }
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0 || !readMore(left)) {
            throw std::runtime_error("the emulator printed no ready line; output so far: " + buffer_);
        }
    }
}

int KVRSimTestProcess::terminate() {
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
    }
    return wait();
}

int KVRSimTestProcess::wait() {
    if (pid_ <= 0) {
        return status_;
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    while (readMore(std::chrono::milliseconds(0))) {
    }
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return status_;
}

std::string KVRSimTestProcess::output() {
    return buffer_;
}

std::pair<int, std::string> KVRSimTestProcess::run(const std::vector<std::string>& arguments,
                                                   const std::string& errorFile) {
    KVRSimTestProcess process(arguments, errorFile);
    int status = process.wait();
    return {status, process.output()};
}
