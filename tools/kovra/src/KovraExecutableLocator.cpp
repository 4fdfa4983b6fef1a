#include "KovraExecutableLocator.h"

#include <cstdlib>
#include <filesystem>
#include <unistd.h>
#include <vector>

namespace {

bool isExecutable(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string KovraExecutableLocator::ownDirectory() {
    std::error_code error;
    auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : self.parent_path().string();
}

std::optional<std::string> KovraExecutableLocator::find(const std::string& name, const std::string& buildFolder) {
    std::vector<std::filesystem::path> candidates;
    if (std::string own = ownDirectory(); !own.empty()) {
        candidates.push_back(std::filesystem::path(own) / name);
        candidates.push_back(std::filesystem::path(own) / ".." / buildFolder / name);
    }
    if (const char* path = std::getenv("PATH")) {
        std::string entries = path;
        size_t start = 0;
        while (start <= entries.size()) {
            size_t end = entries.find(':', start);
            if (end == std::string::npos) end = entries.size();
            if (end > start) candidates.push_back(std::filesystem::path(entries.substr(start, end - start)) / name);
            start = end + 1;
        }
    }
    for (const auto& candidate : candidates)
        if (isExecutable(candidate)) return candidate.lexically_normal().string();
    return std::nullopt;
}
