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

private:
    std::string path_;
};
