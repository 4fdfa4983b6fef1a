#include "testing/KVRTempDirectory.h"
#include "testing/KVRFiles.h"

#include <cstdlib>
#include <stdexcept>

KVRTempDirectory::KVRTempDirectory() {
    std::string pattern = std::filesystem::temp_directory_path().string() + "/kovra-XXXXXX";
    if (!mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

KVRTempDirectory::~KVRTempDirectory() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
}

std::string KVRTempDirectory::read(const std::string& name) const { return KVRFiles::read(file(name)); }

void KVRTempDirectory::write(const std::string& name, const std::string& content) const {
    KVRFiles::write(file(name), content);
}
