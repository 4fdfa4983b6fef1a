#pragma once

#include <chrono>
#include <csignal>
#include <string>
#include <sys/types.h>
#include <vector>

/// What a run of the kovra binary left behind.
struct KovraCliResult {
    int exitCode = -1;  // -1: did not end in time (then killed)
    std::string out;
    std::string err;

    /// Standard error's lines, without empty ones.
    std::vector<std::string> errorLines() const;
};

/// The kovra binary run as a child with both output streams captured. The
/// environment is the test's own without KOVRA_* variables, plus `environment`
/// (NAME=value entries).
class KovraCliProcess {
public:
    explicit KovraCliProcess(const std::vector<std::string>& arguments,
                             const std::vector<std::string>& environment = {},
                             const std::string& program = KOVRA_CLI_BINARY);
    ~KovraCliProcess();
    KovraCliProcess(const KovraCliProcess&) = delete;
    KovraCliProcess& operator=(const KovraCliProcess&) = delete;

    /// Reads standard output until it holds the text; false when the time is
    /// up or the output ended first.
    bool waitForOutput(const std::string& text, std::chrono::milliseconds timeout);
    /// Ctrl-C, or another signal.
    void interrupt(int signal = SIGINT);
    /// Reads both streams to their end and waits for the exit; a child still
    /// running at the deadline is killed and reported with exit code -1.
    KovraCliResult finish(std::chrono::milliseconds timeout = std::chrono::seconds(60));

private:
    /// One poll turn over both streams; false when both have ended or the time is up.
    bool pump(std::chrono::steady_clock::time_point deadline);

    pid_t pid_ = -1;
    int out_ = -1;
    int err_ = -1;
    KovraCliResult result_;
};

/// Runs kovra to its end.
KovraCliResult runKovra(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {},
                        std::chrono::milliseconds timeout = std::chrono::seconds(60));
