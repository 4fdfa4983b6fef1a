#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

/// The emulator binary running as a child process, its standard output on a
/// pipe (to catch the ready line) and its standard error in a file.
class KVRSimTestProcess {
public:
    static constexpr const char* kReadyPrefix = "kovra-pinpad-sim ready on ";
    static constexpr std::chrono::milliseconds kPatience{10000};

    KVRSimTestProcess(const std::vector<std::string>& arguments, const std::string& errorFile);
    ~KVRSimTestProcess();
    KVRSimTestProcess(const KVRSimTestProcess&) = delete;
    KVRSimTestProcess& operator=(const KVRSimTestProcess&) = delete;

    /// The endpoint named by the next ready line; throws if none comes in time.
    std::string waitReady();
    /// Sends SIGTERM (unless it has ended) and returns the exit status.
    int terminate();
    /// Waits for the process to end by itself; returns the exit status.
    int wait();
    /// Everything written to standard output so far (after wait()).
    std::string output();

    /// Runs to completion and returns (exit status, standard output).
    static std::pair<int, std::string> run(const std::vector<std::string>& arguments, const std::string& errorFile);

private:
    bool readMore(std::chrono::milliseconds patience);

    pid_t pid_ = -1;
    int status_ = -1;
    int output_ = -1;
    std::string buffer_;
    size_t consumed_ = 0;
};
