#include "KVRSimDisplay.h"

#include "KVRSimLatin1.h"

#include <fstream>

KVRSimDisplay::KVRSimDisplay(std::optional<std::filesystem::path> logFile) : logFile_(std::move(logFile)) {}

std::string KVRSimDisplay::fit(const std::string& line) {
    std::string fitted = line.substr(0, std::min(line.size(), kWidth));
    fitted.resize(kWidth, ' ');
    return fitted;
}

void KVRSimDisplay::showMessage(const std::string& message) {
    show(message.substr(0, std::min(message.size(), kWidth)), message.size() > kWidth ? message.substr(kWidth) : "");
}

void KVRSimDisplay::show(const std::string& firstLine, const std::string& secondLine) {
    first_ = fit(firstLine);
    second_ = fit(secondLine);
    if (logFile_) {
        std::ofstream out(*logFile_, std::ios::app);
        out << KVRSimLatin1::toUtf8(first_) << '|' << KVRSimLatin1::toUtf8(second_) << '\n';
    }
}
