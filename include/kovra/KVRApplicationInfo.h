#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRPropertyValue.h>

#include <optional>
#include <string>

/// The host application's information dictionary. The library reads its
/// settings from here on every use ("Kovra Homologation", "Kovra Pinpad",
/// "CFBundleVersion"...). Set it in code or load it from a property-list file
/// (XML or binary). Safe to use from any thread.
class KOVRA_API KVRApplicationInfo {
public:
    KVRApplicationInfo() = delete;

    static void setValue(const std::string& key, KVRPropertyValue value);
    static void removeValue(const std::string& key);
    static void clear();
    static KVRPropertyDictionary dictionary();

    static std::optional<KVRPropertyValue> value(const std::string& key);
    /// false when absent.
    static bool boolForKey(const std::string& key);
    static std::optional<std::string> stringForKey(const std::string& key);
    static std::optional<double> numberForKey(const std::string& key);

    /// Replaces the dictionary with the contents of a property-list file whose
    /// root is a dictionary. On a missing or malformed file the dictionary is
    /// left empty, the reason is logged, and false is returned; never throws.
    static bool loadFromPlistFile(const std::string& path);
};
