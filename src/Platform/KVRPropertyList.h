#pragma once

#include <kovra/KVRPropertyValue.h>

#include <optional>
#include <string>

/// Property-list files (XML or binary) through libplist. Only the scalar
/// entries of a root dictionary are kept; nested containers are skipped.
class KVRPropertyList {
public:
    KVRPropertyList() = delete;

    /// The root dictionary of the file, or nothing with the reason in `why`.
    static std::optional<KVRPropertyDictionary> readDictionary(const std::string& path, std::string* why = nullptr);
    static std::optional<KVRPropertyDictionary> parseDictionary(const std::string& bytes, std::string* why = nullptr);
    /// Writes the dictionary as an XML (or binary) property list; false on failure.
    static bool writeDictionary(const std::string& path, const KVRPropertyDictionary& dictionary, bool binary = false);
};
