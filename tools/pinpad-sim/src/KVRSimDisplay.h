#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// The PIN pad's two-line, sixteen-character display. Texts are Latin-1, as
/// they travel. With a log file, each new state is appended as one UTF-8 line:
/// the first display line, "|", the second line, both space-filled to sixteen
/// characters.
class KVRSimDisplay {
public:
    static constexpr size_t kWidth = 16;

    explicit KVRSimDisplay(std::optional<std::filesystem::path> logFile);

    /// A 32-character message: the first 16 characters are the first line.
    void showMessage(const std::string& message);
    void show(const std::string& firstLine, const std::string& secondLine);

    const std::string& firstLine() const { return first_; }
    const std::string& secondLine() const { return second_; }

private:
    static std::string fit(const std::string& line);

    std::optional<std::filesystem::path> logFile_;
    std::string first_ = std::string(kWidth, ' ');
    std::string second_ = std::string(kWidth, ' ');
};
