#pragma once

#include <optional>
#include <string>

/// Finds a companion program: next to the running binary, then in the build
/// tree's sibling folder (build/tools/<folder>/<name>), then on PATH.
class KovraExecutableLocator {
public:
    KovraExecutableLocator() = delete;

    static std::optional<std::string> find(const std::string& name, const std::string& buildFolder);
    /// The directory of the running binary (/proc/self/exe).
    static std::string ownDirectory();
};
