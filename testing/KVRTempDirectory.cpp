#include "testing/KVRTempDirectory.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
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

std::string KVRTempDirectory::read(const std::string& name) const {
    std::ifstream in(file(name), std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

void KVRTempDirectory::write(const std::string& name, const std::string& content) const {
    std::ofstream(file(name), std::ios::binary) << content;
}
