#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRSettingsKeys.h"
#include "Utils/KVRUUID.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>

namespace fs = std::filesystem;

namespace {

struct Settings {
    std::string documents;
    std::string library;
};

std::mutex& dirMutex() {
    static std::mutex m;
    return m;
}
Settings& settings() {
    static auto* s = new Settings();
    return *s;
}

std::string xdgBase() {
    const char* xdg = std::getenv("XDG_DATA_HOME");
    if (xdg && *xdg) return std::string(xdg) + "/kovra/" + KVRDirectories::bundleIdentifier();
    const char* home = std::getenv("HOME");
    std::string base = (home && *home) ? home : "/tmp";
    return base + "/.local/share/kovra/" + KVRDirectories::bundleIdentifier();
}

std::string ensure(const std::string& path) {
    std::error_code ec;
    if (fs::exists(path, ec)) {
        if (fs::is_directory(path, ec)) return path;
        KVRLoggingUtil::console("Path " + path + " exists but is no directory");
        return {};
    }
    fs::create_directories(path, ec);
    if (ec) {
        KVRLoggingUtil::console("Can't create directory " + path + " [" + ec.message() + "]");
        return {};
    }
    return path;
}

bool looksLikeUuid(const std::string& s) {
    if (s.size() != 36) return false;
    for (size_t i = 0; i < s.size(); ++i) {
        bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? s[i] != '-' : !std::isxdigit(static_cast<unsigned char>(s[i]))) return false;
    }
    return true;
}

}  // namespace

void KVRDirectories::setDataDirectory(const std::string& base) {
    std::lock_guard lock(dirMutex());
    settings().documents = base + "/Documents";
    settings().library = base + "/Library";
}

void KVRDirectories::setDocumentsDirectory(const std::string& path) {
    std::lock_guard lock(dirMutex());
    settings().documents = path;
}

void KVRDirectories::setLibraryDirectory(const std::string& path) {
    std::lock_guard lock(dirMutex());
    settings().library = path;
}

void KVRDirectories::reset() {
    std::lock_guard lock(dirMutex());
    settings() = Settings();
}

std::string KVRDirectories::documentsDirectory() {
    std::string path;
    {
        std::lock_guard lock(dirMutex());
        path = settings().documents;
    }
    return ensure(path.empty() ? xdgBase() + "/Documents" : path);
}

std::string KVRDirectories::libraryDirectory() {
    std::string path;
    {
        std::lock_guard lock(dirMutex());
        path = settings().library;
    }
    return ensure(path.empty() ? xdgBase() + "/Library" : path);
}

std::string KVRDirectories::bundleIdentifier() {
    if (auto id = KVRApplicationInfo::stringForKey(KVRSettingsKeys::kBundleIdentifier); id && !id->empty()) return *id;
    if (auto id = KVRApplicationInfo::stringForKey("CFBundleIdentifier"); id && !id->empty()) return *id;
    return "br.com.kovra.app";
}

std::string KVRDirectories::vendorIdentifier() {
    static std::mutex vendorMutex;
    std::lock_guard lock(vendorMutex);
    std::string library = libraryDirectory();
    if (library.empty()) return KVRUUID::uuidString();  // cannot be kept; still a valid identifier
    std::string file = library + "/vendor-identifier";
    {
        std::ifstream in(file);
        std::string stored;
        if (in && std::getline(in, stored) && looksLikeUuid(stored)) return stored;
    }
    std::string made = KVRUUID::uuidString();
    std::string temporary = file + ".tmp";
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << made << "\n";
        if (!out) {
            KVRLoggingUtil::console("Can't write " + file + " [" + std::strerror(errno) + "]");
            return made;
        }
    }
    std::error_code ec;
    fs::rename(temporary, file, ec);
    return made;
}
