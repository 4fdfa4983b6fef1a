#include "KVRSimTestDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

KVRSimTestDirectory::KVRSimTestDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kovra-pinpad-sim-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        throw std::runtime_error("mkdtemp failed");
    }
    path_ = pattern;
}

KVRSimTestDirectory::~KVRSimTestDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string KVRSimTestDirectory::read(const std::string& name) const {
    std::ifstream in(file(name));
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

void KVRSimTestDirectory::write(const std::string& name, const std::string& content) const {
    std::ofstream(file(name)) << content;
}
