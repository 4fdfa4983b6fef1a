#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

inline constexpr int kStopTimedOut = -2;

// Runs kovra-acquirer-sim as a child process on --port 0 with the given
// state directory, and waits for its two ready lines.
class SimProcess {
public:
    explicit SimProcess(std::filesystem::path stateDirectory, std::vector<std::string> extraArguments = {});
    ~SimProcess();
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    const std::string& readyLine() const { return readyLine_; }
    const std::string& caLine() const { return caLine_; }
    const std::string& baseUrl() const { return baseUrl_; }
    const std::string& caFile() const { return caFile_; }
    const std::filesystem::path& stateDirectory() const { return stateDirectory_; }

    // The request log's lines so far.
    std::vector<std::string> requestLog() const;

    // SIGTERM, then waits; returns the exit status (-1 when killed by a
    // signal, kStopTimedOut when it had to be killed after ten seconds).
    int stop();

    // Runs the binary to completion with `arguments`; returns its exit status
    // and what it printed on standard output and standard error.
    struct Finished {
        int status;
        std::string output;
        std::string errors;
    };
    static Finished runToCompletion(const std::vector<std::string>& arguments);

private:
    void readReadyLines(int fd);

    std::filesystem::path stateDirectory_;
    pid_t pid_ = -1;
    std::string readyLine_;
    std::string caLine_;
    std::string baseUrl_;
    std::string caFile_;
};
