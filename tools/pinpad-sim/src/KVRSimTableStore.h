#pragma once

#include "KVRSimTableRecord.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// The EMV tables held by the emulated PIN pad. A load runs TLI (which
/// invalidates what was there and names the new table stamp), any number of
/// TLR records, then TLE, which makes the new tables current. With a state
/// directory, the tables survive a restart.
class KVRSimTableStore {
public:
    static constexpr const char* kStateFileName = "pinpad-tables.json";

    /// Without a directory the tables live only in memory.
    explicit KVRSimTableStore(std::optional<std::filesystem::path> stateDirectory);

    /// Reads the state file, if any. Throws std::runtime_error on a damaged file.
    void restore();

    void begin(int acquirer, const std::string& stamp);
    /// False when no load is in progress.
    bool add(const KVRSimTableRecord& record);
    /// False when no load is in progress.
    bool commit();

    /// True once a complete load with this ten-character stamp is current.
    bool isCurrent(const std::string& stamp) const;
    size_t count(KVRSimTableRecord::Type type) const;

private:
    struct Tables {
        std::string stamp;
        int acquirer = 0;
        std::vector<std::string> aids;
        std::vector<std::string> capks;
    };

    void save() const;
    std::filesystem::path stateFile() const;

    std::optional<std::filesystem::path> directory_;
    Tables current_;
    std::optional<Tables> loading_;
};
