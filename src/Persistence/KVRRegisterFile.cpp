#include "Persistence/KVRRegisterFile.h"

#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRPropertyList.h"

std::string KVRRegisterFile::path() {
    std::string documents = KVRDirectories::documentsDirectory();
    return documents.empty() ? std::string() : documents + "/" + kFileName;
}

KVRRegisterFile KVRRegisterFile::load() {
    KVRRegisterFile file;
    std::string location = path();
    if (location.empty()) return file;
    std::string why;
    if (auto dictionary = KVRPropertyList::readDictionary(location, &why)) {
        file.entries_ = std::move(*dictionary);
    } else if (why != "no such file") {
        KVRLoggingUtil::printLog("Can't read " + location + ": " + why);
    }
    return file;
}

std::optional<std::string> KVRRegisterFile::kovraCode() { return load().stringForKey("kovracode"); }

std::optional<std::string> KVRRegisterFile::stringForKey(const std::string& key) const {
    auto it = entries_.find(key);
    if (it == entries_.end()) return std::nullopt;
    const auto* text = std::get_if<std::string>(&it->second);
    if (!text) return std::nullopt;
    return *text;
}
