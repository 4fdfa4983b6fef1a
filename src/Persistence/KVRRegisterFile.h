#pragma once

#include <kovra/KVRPropertyValue.h>

#include <optional>
#include <string>

/// "register.plist" in the Documents directory, where an earlier release kept
/// the enrolled merchant. Read only; a missing or unreadable file, or a value
/// that is not a string, reads as absent.
class KVRRegisterFile {
public:
    static constexpr const char* kFileName = "register.plist";

    static std::string path();
    /// The file as it is now (empty when it cannot be read).
    static KVRRegisterFile load();
    /// The "kovracode" entry of the file as it is now.
    static std::optional<std::string> kovraCode();

    /// The string stored under the key.
    std::optional<std::string> stringForKey(const std::string& key) const;

private:
    KVRPropertyDictionary entries_;
};
