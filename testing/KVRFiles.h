#pragma once

#include <string>
#include <vector>

/// Files as the suites read and write them, byte for byte.
namespace KVRFiles {

/// The whole file (empty when it is not there).
std::string read(const std::string& path);
/// Its lines without their line ends (none when it is not there).
std::vector<std::string> lines(const std::string& path);
void write(const std::string& path, const std::string& content);
/// A file of tests/data; throws when it is missing, so that a renamed
/// fixture fails loudly instead of comparing with nothing.
std::string testData(const std::string& name);

}  // namespace KVRFiles
