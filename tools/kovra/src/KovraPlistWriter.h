#pragma once

#include <kovra/KVRPropertyValue.h>

#include <string>

/// Writes an information dictionary as an XML property list, the format
/// KVRApplicationInfo::loadFromPlistFile reads.
class KovraPlistWriter {
public:
    KovraPlistWriter() = delete;

    static std::string xml(const KVRPropertyDictionary& dictionary);
    /// False when the file cannot be written.
    static bool write(const std::string& path, const KVRPropertyDictionary& dictionary);
};
