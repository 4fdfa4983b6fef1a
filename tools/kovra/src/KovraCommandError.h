#pragma once

#include <kovra/KVRError.h>

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <string>

/// Why a command stopped, with the exit code it ends the tool with: 1 when the
/// acquirer or the card declined, 2 for bad usage (including an operation the
/// library refuses in the current state, such as a sale before enrolment),
/// 3 for a technical failure (network, acquirer's answer, PIN pad, store).
/// `what()` is the one line printed on standard error; with --json the error
/// is printed as {"error":{"code":…,"domain":…,"message":…}} instead.
class KovraCommandError : public std::runtime_error {
public:
    static constexpr int kDeclined = 1;
    static constexpr int kUsage = 2;
    static constexpr int kTechnical = 3;

    /// "error CODE: DESCRIPTION"; the exit code follows the kind of error.
    static KovraCommandError fromLibrary(const KVRError& error);
    /// "kovra: MESSAGE", a technical failure found by the tool (domain "kovra").
    static KovraCommandError failure(const std::string& message);
    /// "kovra: MESSAGE", bad usage (domain "usage").
    static KovraCommandError usage(const std::string& message);

    /// The exit code a library error ends the tool with.
    static int exitCodeOf(const KVRError& error);

    int exitCode() const { return exitCode_; }
    /// {"error":{"code":…,"domain":…,"message":…}} and the members added by `with`.
    nlohmann::ordered_json toJson() const;
    /// Adds a member to the JSON document, next to "error" (what the command
    /// had to show despite the failure, such as a declined sale's record).
    KovraCommandError& with(const std::string& key, nlohmann::ordered_json value);

private:
    KovraCommandError(std::string line, int exitCode, std::string domain, long code, std::string message);

    int exitCode_;
    std::string domain_;
    long code_;
    std::string message_;
    nlohmann::ordered_json extra_ = nlohmann::ordered_json::object();
};
