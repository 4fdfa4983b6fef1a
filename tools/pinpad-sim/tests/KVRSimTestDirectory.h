#pragma once

#include <string>

/// A scratch directory removed with everything in it when the test ends.
class KVRSimTestDirectory {
public:
    KVRSimTestDirectory();
    ~KVRSimTestDirectory();
    KVRSimTestDirectory(const KVRSimTestDirectory&) = delete;
    KVRSimTestDirectory& operator=(const KVRSimTestDirectory&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    std::string read(const std::string& name) const;
    void write(const std::string& name, const std::string& content) const;

private:
    std::string path_;
};
