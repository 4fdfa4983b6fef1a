#pragma once

#include <string>

/// What every benchmark program runs under: the library's data directories in
/// a fresh temporary folder (removed afterwards), no pause after PIN pad
/// writes, a read time-out so that a script that runs dry fails instead of
/// hanging, log lines formatted as usual but thrown away, so that the
/// numbers are the library's and not the terminal's, and a heap that keeps
/// its memory (see the .cpp).
class KVRBenchEnvironment {
public:
    KVRBenchEnvironment();
    ~KVRBenchEnvironment();
    KVRBenchEnvironment(const KVRBenchEnvironment&) = delete;
    KVRBenchEnvironment& operator=(const KVRBenchEnvironment&) = delete;

    const std::string& dataDirectory() const { return directory_; }

private:
    std::string directory_;
};
