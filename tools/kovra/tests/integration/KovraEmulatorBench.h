#pragma once

#include "KovraCliProcess.h"

#include "support/KVRProcess.h"
#include "support/KVRTempDirectory.h"

#include <nlohmann/json.hpp>

#include <map>
#include <memory>
#include <string>
#include <vector>

/// Both emulators started for one test in a directory of its own, an
/// information dictionary that points kovra at them (write pause 0) and a
/// data directory, handed to kovra through KOVRA_INFO_PLIST and KOVRA_DATA_DIR.
class KovraEmulatorBench {
public:
    struct Options {
        /// The PIN pad emulator's --scenario (cards, faults); none when null.
        nlohmann::json scenario;
        /// Point the hosts at a loopback port where nothing listens.
        bool deadAcquirer = false;
    };

    KovraEmulatorBench();
    explicit KovraEmulatorBench(const Options& options);

    /// kovra with this bench's dictionary and data directory.
    KovraCliResult run(const std::vector<std::string>& arguments) const;
    std::vector<std::string> environment() const;

    std::string path(const std::string& name) const { return directory_.file(name); }
    const std::string& pinpadDevice() const { return pinpadDevice_; }
    /// The mails the acquirer accepted, oldest first.
    std::vector<nlohmann::json> outbox() const;
    /// The requests the PIN pad received (command names and fields).
    std::vector<std::string> pinpadCommands() const;

    /// Writes an XML property list of string and real values.
    static void writeDictionary(const std::string& file, const std::map<std::string, std::string>& strings,
                                const std::map<std::string, double>& reals = {});
    /// A loopback port nothing listens on (bound, then released).
    static int closedPort();

private:
    void startAcquirer();
    void startPinpad(const nlohmann::json& scenario);

    KVRTempDirectory directory_;
    std::unique_ptr<KVRProcess> acquirer_;
    std::unique_ptr<KVRProcess> pinpad_;
    std::string acquirerHost_;
    std::string caFile_;
    std::string pinpadDevice_;
};
