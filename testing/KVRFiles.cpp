#include "testing/KVRFiles.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

std::string KVRFiles::read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::vector<std::string> KVRFiles::lines(const std::string& path) {
    std::vector<std::string> out;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

void KVRFiles::write(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string KVRFiles::testData(const std::string& name) {
    const std::string path = std::string(KOVRA_TEST_DATA_DIR) + "/" + name;
    if (!std::ifstream(path)) throw std::runtime_error("missing test data " + name);
    return read(path);
}
