#pragma once

#include "KVRSimIdentity.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// The command line of kovra-pinpad-sim.
class KVRSimOptions {
public:
    /// A command line that cannot be used; the message says why.
    class Invalid : public std::invalid_argument {
    public:
        using std::invalid_argument::invalid_argument;
    };

    /// Throws Invalid.
    static KVRSimOptions parse(const std::vector<std::string>& arguments);
    static std::string helpText();

    bool help = false;
    bool version = false;
    bool verbose = false;
    bool strictAbecs = false;
    bool logCardData = false;
    std::optional<int> tcpPort;
    /// Bits per second of the simulated line; none: no pacing.
    std::optional<int> bitRate;
    std::optional<std::filesystem::path> link;
    std::optional<std::filesystem::path> stateDirectory;
    std::optional<std::string> card;
    std::optional<std::filesystem::path> scenario;
    std::vector<std::string> faults;
    std::optional<std::filesystem::path> displayLog;
    std::optional<std::filesystem::path> commandLog;
    KVRSimIdentity identity;

private:
    void set(const std::string& option, const std::string& value);
    static std::string identityText(const std::string& option, const std::string& value, size_t width);
};
