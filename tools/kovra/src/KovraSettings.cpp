#include "KovraSettings.h"

#include "KovraCommandError.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include <CLI/CLI.hpp>

#include <iostream>

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
        ->type_name("DEVICE");
    app.add_option("--read-timeout", readTimeout,
                   "give up on a PIN pad that stays silent this many seconds while a reply is awaited; "
                   "sets \"Kovra Pinpad Read Timeout\" (default: wait for the PIN pad)")
        ->check(CLI::PositiveNumber)
        ->type_name("SECONDS");
    app.add_option("--pinpad-link", pinpadLink,
                   "the link rules: abecs (acknowledgements, resends, byte stuffing; for real PIN pads) or spec "
                   "(the default link); sets \"Kovra Pinpad Link\"")
        ->check(CLI::IsMember({"abecs", "spec"}))
        ->type_name("LINK");
    app.add_flag("--json", json, "print the command's data as JSON on standard output");
    app.add_flag("--verbose", verbose, "turn the library's debug log on (on standard error)");
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
        KVRLoggingUtil::setSink({});
    } else {
        KVRLoggingUtil::setSink([](const std::string&) {});
    }
}
