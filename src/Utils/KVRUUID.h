#pragma once

#include <string>

/// Random (version 4) UUIDs in upper-case textual form, unless the installed
/// platform hooks make them.
class KVRUUID {
public:
    KVRUUID() = delete;
    /// "8-4-4-4-12" upper-case hexadecimal.
    static std::string uuidString();
};
