#include "KovraSettings.h"

#include "KovraCommandError.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <sstream>

namespace {

// The speeds a serial line can be set to; "DEVICE@SPEED" must name one.
const int kSerialSpeeds[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400, 460800, 921600};

std::string serialSpeedList() {
    std::string list;
    for (int speed : kSerialSpeeds) list += (list.empty() ? "" : ", ") + std::to_string(speed);
    return list;
}

// Each comma-separated entry of a device setting: tcp://host:port, a path, or
// path@speed with a speed the line supports.
CLI::Validator pinpadDevices() {
    return CLI::Validator(
        [](std::string& value) -> std::string {
            std::stringstream entries(value);
            for (std::string entry; std::getline(entries, entry, ',');) {
                size_t at = entry.rfind('@');
                if (entry.rfind("tcp://", 0) == 0 || at == std::string::npos) continue;
                std::string speed = entry.substr(at + 1);
                bool digits = !speed.empty() && speed.size() < 8 &&
                              std::all_of(speed.begin(), speed.end(), [](char c) { return c >= '0' && c <= '9'; });
                if (!digits || std::none_of(std::begin(kSerialSpeeds), std::end(kSerialSpeeds),
                                            [&speed](int known) { return std::stoi(speed) == known; })) {
                    return "the speed after @ must be one of " + serialSpeedList() + " bit/s, got " + speed;
                }
            }
            return {};
        },
        "DEVICE");
}

// A number of seconds above zero, said plainly when it is not.
CLI::Validator secondsAboveZero() {
    return CLI::Validator(
        [](std::string& value) -> std::string {
            double seconds = 0;
            std::istringstream text(value);
            bool number = static_cast<bool>(text >> seconds) && text.peek() == EOF;
            if (number && std::isfinite(seconds) && seconds > 0) return {};
            return "expected a number of seconds above 0 (such as 0.5 or 120), got " + value;
        },
        "SECONDS");
}

}  // namespace

void KovraSettings::addOptions(CLI::App& app) {
    app.add_option("--info", infoFile,
                   "the application information dictionary (property list, XML or binary) "
                   "with the hosts, the PIN pad and the other settings")
        ->envname("KOVRA_INFO_PLIST")
        ->type_name("FILE");
    app.add_option("--data-dir", dataDirectory,
                   "keep Documents and Library (the store) under DIR; default: "
                   "$XDG_DATA_HOME/kovra/<bundle identifier>")
        ->envname("KOVRA_DATA_DIR")
        ->type_name("DIR");
    app.add_option("--pinpad", pinpad,
                   "the PIN pad: a serial device path (path@speed to set the speed) or tcp://host:port; "
                   "overrides \"Kovra Pinpad\"")
        ->check(pinpadDevices())
        ->type_name("DEVICE");
    app.add_option("--read-timeout", readTimeout,
                   "give up on a PIN pad whose reply has not arrived this many seconds after the command; "
                   "sets \"Kovra Pinpad Read Timeout\" (default: wait for the PIN pad)")
        ->check(secondsAboveZero())
        ->type_name("SECONDS");
    app.add_option("--pinpad-link", pinpadLink,
                   "the link rules: abecs (acknowledgements, resends, byte stuffing; for real PIN pads) or spec "
                   "(the default link); sets \"Kovra Pinpad Link\"")
        ->check(CLI::IsMember({"abecs", "spec"}))
        ->type_name("LINK");
    app.add_flag("--json", json, "print the command's data, or its error, as JSON on standard output");
    app.add_flag("--verbose", verbose,
                 "turn the library's debug log on and print it, with the PIN pad traffic, on standard error "
                 "(otherwise the library logs to the system log, or to standard error with KOVRA_LOG=stderr)");
}

std::optional<std::string> KovraSettings::loadInformationDictionary(const std::string& path) {
    std::string reason;
    KVRLoggingUtil::setSink([&reason](const std::string& line) { reason = line; });
    bool loaded = KVRApplicationInfo::loadFromPlistFile(path);
    KVRLoggingUtil::setSink({});
    if (loaded) return std::nullopt;
    // The library says "Application information PATH not loaded: WHY".
    size_t because = reason.find(" not loaded: ");
    return because == std::string::npos ? "not a property list with a dictionary at its root"
                                        : reason.substr(because + std::string(" not loaded: ").size());
}

void KovraSettings::apply() const {
    if (!infoFile.empty()) {
        if (auto reason = loadInformationDictionary(infoFile))
            throw KovraCommandError::usage("cannot use the information dictionary " + infoFile + ": " + *reason);
    }
    if (!dataDirectory.empty()) KVRDirectories::setDataDirectory(dataDirectory);
    if (!pinpad.empty()) KVRApplicationInfo::setValue("Kovra Pinpad", pinpad);
    if (readTimeout) KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", *readTimeout);
    if (!pinpadLink.empty()) KVRApplicationInfo::setValue("Kovra Pinpad Link", pinpadLink);
    if (verbose) KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    routeLogs();
}

void KovraSettings::routeLogs(bool verbose) {
    if (verbose || KVRLoggingUtil::isDebugEnabled()) {
        KVRLoggingUtil::setSink([](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });
    } else {
        KVRLoggingUtil::setSink({});
    }
}
