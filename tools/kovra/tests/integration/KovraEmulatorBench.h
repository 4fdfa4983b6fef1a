#pragma once

#include "testing/KVREmulators.h"
#include "testing/KVRLoopbackPort.h"
#include "testing/KVRProcess.h"
#include "testing/KVRTempDirectory.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <vector>

/// The kovra binary (or another program) run to its end with both output
/// streams captured. The environment is the test's own without KOVRA_*
/// variables, plus `environment` (NAME=value entries).
KVRProcess::Result runKovra(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {},
                            std::chrono::milliseconds timeout = std::chrono::seconds(60),
                            const std::string& program = KOVRA_CLI_BINARY);
/// kovra started and left running (to be interrupted).
std::unique_ptr<KVRProcess> startKovra(const std::vector<std::string>& arguments,
                                       const std::vector<std::string>& environment);

/// Both emulators started for one test (KVREmulators), an information
/// dictionary file that points kovra at them (write pause 0), and a data
/// directory, handed to the kovra process through KOVRA_INFO_PLIST and
/// KOVRA_DATA_DIR.
class KovraEmulatorBench {
public:
    struct Options {
        /// One card per card read; default chip-visa for every one.
        std::vector<std::string> cards;
        /// PIN pad fault rules (JSON objects, see kovra-pinpad-sim --help).
        std::vector<nlohmann::json> pinpadFaults;
        /// Point the hosts at a loopback port where nothing listens.
        bool deadAcquirer = false;
    };

    KovraEmulatorBench();
    explicit KovraEmulatorBench(const Options& options);

    /// kovra with this bench's dictionary and data directory.
    KVRProcess::Result run(const std::vector<std::string>& arguments) const { return runKovra(arguments, environment()); }
    std::vector<std::string> environment() const;
    /// The kovra process's data directory (Documents and Library).
    std::string dataDirectory() const { return directory_.file("data"); }

    const std::string& pinpadDevice() const { return emulators_.pinpadDevice(); }
    /// The mails the acquirer accepted, oldest first.
    std::vector<nlohmann::json> outbox() const { return emulators_.outbox(); }
    /// The requests the PIN pad received, in order.
    std::vector<std::string> pinpadCommands() const { return emulators_.commandLog(); }

private:
    static KVREmulators::Options emulatorOptions(const Options& options);

    KVREmulators emulators_;
    KVRTempDirectory directory_;
    /// Held for the bench's life, so no other program can take it meanwhile.
    std::unique_ptr<KVRLoopbackPort> deadPort_;
};
