#pragma once

#include "KovraCliProcess.h"

#include "testing/KVREmulators.h"
#include "testing/KVRTempDirectory.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

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
    KovraCliResult run(const std::vector<std::string>& arguments) const;
    std::vector<std::string> environment() const;
    /// The kovra process's data directory (Documents and Library).
    std::string dataDirectory() const { return directory_.file("data"); }

    const std::string& pinpadDevice() const { return emulators_.pinpadDevice(); }
    /// The mails the acquirer accepted, oldest first.
    std::vector<nlohmann::json> outbox() const { return emulators_.outbox(); }
    /// The requests the PIN pad received, in order.
    std::vector<std::string> pinpadCommands() const { return emulators_.commandLog(); }

    /// A loopback port nothing listens on (bound, then released).
    static int closedPort();

private:
    static KVREmulators::Options emulatorOptions(const Options& options);

    KVREmulators emulators_;
    KVRTempDirectory directory_;
};
