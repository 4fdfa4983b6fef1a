#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// A child process for integration tests (the emulators, the CLI). Its
/// standard output is read line by line; it is stopped when the object dies.
class KVRProcess {
public:
    KVRProcess(const std::string& program, const std::vector<std::string>& arguments,
               const std::vector<std::string>& environment = {});
    ~KVRProcess();
    KVRProcess(const KVRProcess&) = delete;
    KVRProcess& operator=(const KVRProcess&) = delete;

    /// The next line of standard output, or nothing when the time is up or the
    /// output ended.
    std::optional<std::string> readLine(std::chrono::milliseconds timeout);
    /// Reads lines until one starts with the prefix; returns it.
    std::optional<std::string> waitForLine(const std::string& prefix, std::chrono::milliseconds timeout);
    /// SIGTERM, then SIGKILL after a grace period; returns the exit status.
    int stop(std::chrono::milliseconds grace = std::chrono::milliseconds(2000));
    /// Waits for the process to end by itself; nothing when it is still running.
    std::optional<int> wait(std::chrono::milliseconds timeout);
    pid_t pid() const { return pid_; }

private:
    pid_t pid_ = -1;
    int out_ = -1;
    std::string pending_;
    std::optional<int> status_;
};
