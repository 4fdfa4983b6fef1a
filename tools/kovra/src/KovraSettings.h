#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

/// The global options and how they configure the library before a command.
class KovraSettings {
public:
    std::string infoFile;       // --info, KOVRA_INFO_PLIST
    std::string dataDirectory;  // --data-dir, KOVRA_DATA_DIR
    std::string pinpad;         // --pinpad
    std::optional<double> readTimeout;
    std::string pinpadLink;     // --pinpad-link
    bool json = false;
    bool verbose = false;

    void addOptions(CLI::App& app);
    /// Loads the information dictionary, places the data directories and
    /// applies the overrides. A missing or unreadable dictionary is a usage
    /// error.
    void apply() const;
    /// The library's log lines go to standard error with --verbose (or when
    /// the dictionary turns the debug log on); otherwise where the library
    /// sends them (the system log), so that the tool's own output stays
    /// readable.
    void routeLogs() const { routeLogs(verbose); }
    static void routeLogs(bool verbose);

    /// Loads a property-list file into the information dictionary; the
    /// library's reason when it cannot. Leaves the library's log at its
    /// default: route it again afterwards.
    static std::optional<std::string> loadInformationDictionary(const std::string& path);
};
