#pragma once

#include <string>

/// Display texts travel in ISO-8859-1, one byte per character; scenario
/// files and logs are UTF-8.
class KVRSimLatin1 {
public:
    KVRSimLatin1() = delete;
    static std::string toUtf8(const std::string& latin1);
    /// Characters outside Latin-1, and broken sequences, become "?".
    static std::string fromUtf8(const std::string& utf8);
};
