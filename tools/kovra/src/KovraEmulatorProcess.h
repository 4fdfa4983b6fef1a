#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// An emulator the demo runs: its standard output is read for the ready
/// lines, its standard error goes to a log file. Stopped (SIGTERM, then
/// SIGKILL) by stop() or when the object dies.
class KovraEmulatorProcess {
public:
    KovraEmulatorProcess(const std::string& program, const std::vector<std::string>& arguments,
                         const std::string& errorLog);
    ~KovraEmulatorProcess();
    KovraEmulatorProcess(const KovraEmulatorProcess&) = delete;
    KovraEmulatorProcess& operator=(const KovraEmulatorProcess&) = delete;

    /// Reads standard output until a line starts with the prefix and returns
    /// the rest of that line; nothing when the time is up or the output ended.
    std::optional<std::string> waitForLine(const std::string& prefix, std::chrono::milliseconds timeout);
    /// Asks it to end (SIGTERM) without waiting.
    void terminate();
    /// Asks it to end, waits up to `grace`, then kills it. Safe from any
    /// thread, and more than once.
    void stop(std::chrono::milliseconds grace = std::chrono::milliseconds(3000));

private:
    std::optional<std::string> nextLine(std::chrono::steady_clock::time_point deadline);

    std::mutex mutex_;
    pid_t pid_ = -1;
    int output_ = -1;
    std::string pending_;
};
