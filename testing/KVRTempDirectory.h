#pragma once

#include <filesystem>
#include <string>

/// A directory that exists for the life of the object.
class KVRTempDirectory {
public:
    KVRTempDirectory();
    ~KVRTempDirectory();
    KVRTempDirectory(const KVRTempDirectory&) = delete;
    KVRTempDirectory& operator=(const KVRTempDirectory&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    /// The whole file (empty when it is not there).
    std::string read(const std::string& name) const;
    void write(const std::string& name, const std::string& content) const;

private:
    std::string path_;
};
