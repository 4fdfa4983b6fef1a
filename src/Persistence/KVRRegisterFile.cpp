#include "Persistence/KVRRegisterFile.h"

#include <kovra/KVRDirectories.h>
#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRPropertyList.h"

std::string KVRRegisterFile::path() {
    std::string documents = KVRDirectories::documentsDirectory();
    return documents.empty() ? std::string() : documents + "/" + kFileName;
}

std::optional<std::string> KVRRegisterFile::stringForKey(const std::string& key) {
    std::string file = path();
    if (file.empty()) return std::nullopt;
    std::string why;
    auto dictionary = KVRPropertyList::readDictionary(file, &why);
    if (!dictionary) {
        if (why != "no such file") KVRLoggingUtil::printLog("Can't read " + file + ": " + why);
        return std::nullopt;
    }
    auto it = dictionary->find(key);
    if (it == dictionary->end()) return std::nullopt;
    const auto* text = std::get_if<std::string>(&it->second);
    if (!text) return std::nullopt;
    return *text;
}

std::optional<std::string> KVRRegisterFile::kovraCode() { return stringForKey("kovracode"); }
