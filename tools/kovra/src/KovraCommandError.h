#pragma once

#include <kovra/KVRError.h>

#include <stdexcept>
#include <string>

/// Why a command stopped, with the exit code it ends the tool with: 1 for a
/// failure the library reported (or a record that does not exist), 2 for bad
/// usage. `what()` is the one line printed on standard error.
class KovraCommandError : public std::runtime_error {
public:
    static constexpr int kFailure = 1;
    static constexpr int kUsage = 2;

    /// "error CODE: DESCRIPTION", exit 1.
    static KovraCommandError fromLibrary(const KVRError& error);
    /// "kovra: MESSAGE", exit 1.
    static KovraCommandError failure(const std::string& message);
    /// "kovra: MESSAGE", exit 2.
    static KovraCommandError usage(const std::string& message);

    int exitCode() const { return exitCode_; }

private:
    KovraCommandError(std::string line, int exitCode);

    int exitCode_;
};
