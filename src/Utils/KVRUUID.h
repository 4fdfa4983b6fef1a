#pragma once

#include <functional>
#include <string>

/// Random (version 4) UUIDs in upper-case textual form. Tests may replace the
/// source to get reproducible documents.
class KVRUUID {
public:
    KVRUUID() = delete;
    /// "8-4-4-4-12" upper-case hexadecimal.
    static std::string uuidString();
    /// An empty function restores the random source.
    static void setGenerator(std::function<std::string()> generator);
};
