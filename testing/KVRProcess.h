#pragma once

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

class KVRTempDirectory;

/// How a KVRProcess starts its child.
struct KVRProcessOptions {
    /// NAME=value entries replacing the parent's; "PREFIX*" drops every
    /// inherited variable whose name starts with PREFIX.
    std::vector<std::string> environment;
    /// Keep standard error in a file (read with errors()); a file, not a
    /// pipe, so a chatty child never blocks on a reader that is not there.
    bool captureErrors = false;
};

/// A child process for integration tests (the emulators, the CLI, the
/// examples). Standard input is /dev/null; standard output is read line by
/// line or to its end; standard error goes to the test's own or, when asked,
/// to a file of its own. The process group is stopped when the object dies.
class KVRProcess {
public:
    using Options = KVRProcessOptions;

    /// What a finished run left behind.
    struct Result {
        int exitCode = -1;  ///< 128 + signal when killed; -1 when it did not end in time
        std::string out;    ///< standard output not read before
        std::string err;    ///< standard error, when captured
        /// Standard error's lines, without empty ones.
        std::vector<std::string> errorLines() const;
    };

    KVRProcess(const std::string& program, const std::vector<std::string>& arguments, Options options = {});
    ~KVRProcess();
    KVRProcess(const KVRProcess&) = delete;
    KVRProcess& operator=(const KVRProcess&) = delete;

    /// Runs to the end (see finish()).
    static Result run(const std::string& program, const std::vector<std::string>& arguments, Options options = {},
                      std::chrono::milliseconds timeout = std::chrono::seconds(60));

    /// The next line of standard output, or nothing when the time is up or the
    /// output ended.
    std::optional<std::string> readLine(std::chrono::milliseconds timeout);
    /// Reads lines until one starts with the prefix; returns it.
    std::optional<std::string> waitForLine(const std::string& prefix, std::chrono::milliseconds timeout);
    /// What the child wrote to standard error so far (captureErrors only).
    std::string errors() const;
    /// Sends the signal to the child alone (Ctrl-C is SIGINT).
    void signal(int number = SIGINT);
    /// Reads standard output to its end, then waits for the exit; a child still
    /// running at the deadline is killed and reported with exit code -1.
    Result finish(std::chrono::milliseconds timeout = std::chrono::seconds(60));
    /// SIGTERM, then SIGKILL after a grace period; returns the exit status.
    int stop(std::chrono::milliseconds grace = std::chrono::milliseconds(2000));
    /// Waits for the process to end by itself; nothing when it is still running.
    std::optional<int> wait(std::chrono::milliseconds timeout);
    pid_t pid() const { return pid_; }

private:
    /// Appends what standard output has to pending_; false at its end or the deadline.
    bool readMore(std::chrono::steady_clock::time_point deadline);
    void kill();

    pid_t pid_ = -1;
    int out_ = -1;
    std::string pending_;
    std::optional<int> status_;
    std::unique_ptr<KVRTempDirectory> errorDirectory_;
};
