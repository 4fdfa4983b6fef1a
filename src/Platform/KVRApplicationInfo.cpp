#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRPropertyList.h"

#include <mutex>

namespace {
std::mutex& infoMutex() {
    static std::mutex m;
    return m;
}
KVRPropertyDictionary& info() {
    static auto* d = new KVRPropertyDictionary();  // lives for the process
    return *d;
}
}  // namespace

void KVRApplicationInfo::setValue(const std::string& key, KVRPropertyValue value) {
    std::lock_guard lock(infoMutex());
    info()[key] = std::move(value);
}

void KVRApplicationInfo::removeValue(const std::string& key) {
    std::lock_guard lock(infoMutex());
    info().erase(key);
}

void KVRApplicationInfo::clear() {
    std::lock_guard lock(infoMutex());
    info().clear();
}

KVRPropertyDictionary KVRApplicationInfo::dictionary() {
    std::lock_guard lock(infoMutex());
    return info();
}

std::optional<KVRPropertyValue> KVRApplicationInfo::value(const std::string& key) {
    std::lock_guard lock(infoMutex());
    auto it = info().find(key);
    if (it == info().end()) return std::nullopt;
    return it->second;
}

bool KVRApplicationInfo::boolForKey(const std::string& key) {
    auto v = value(key);
    return v && KVRPropertyValues::boolValue(*v);
}

std::optional<std::string> KVRApplicationInfo::stringForKey(const std::string& key) {
    auto v = value(key);
    if (!v) return std::nullopt;
    return KVRPropertyValues::stringValue(*v);
}

std::optional<double> KVRApplicationInfo::numberForKey(const std::string& key) {
    auto v = value(key);
    if (!v) return std::nullopt;
    return KVRPropertyValues::doubleValue(*v);
}

bool KVRApplicationInfo::loadFromPlistFile(const std::string& path) {
    std::string why;
    auto loaded = KVRPropertyList::readDictionary(path, &why);
    std::lock_guard lock(infoMutex());
    info().clear();
    if (!loaded) {
        KVRLoggingUtil::console("Application information " + path + " not loaded: " + why);
        return false;
    }
    info() = std::move(*loaded);
    return true;
}
