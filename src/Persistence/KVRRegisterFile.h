#pragma once

#include <optional>
#include <string>

/// "register.plist" in the Documents directory, where an earlier release kept
/// the enrolled merchant. Read only; a missing or unreadable file, or a value
/// that is not a string, reads as absent.
class KVRRegisterFile {
public:
    static constexpr const char* kFileName = "register.plist";

    KVRRegisterFile() = delete;

    static std::string path();
    /// The string stored under the key.
    static std::optional<std::string> stringForKey(const std::string& key);
    /// The "kovracode" entry.
    static std::optional<std::string> kovraCode();
};
