#include "RequestLog.h"

#include "SimTime.h"

#include <iostream>
#include <stdexcept>

namespace acqsim {

RequestLog::RequestLog(std::filesystem::path file, bool echo)
    : out_(file, std::ios::app | std::ios::binary), echo_(echo) {
    if (!out_) {
        throw std::runtime_error("cannot open request log " + file.string());
    }
}

void RequestLog::write(const std::string& method, const std::string& path, int status, const std::string& outcome) {
    std::string line = SimTime::utcStamp() + " " + method + " " + path + " " + std::to_string(status) + " " + outcome;
    // A path or outcome that carried a line break would split one request in two.
    for (char& c : line) {
        if (c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    std::lock_guard lock(mutex_);
    out_ << line << '\n';
    out_.flush();
    if (echo_) {
        std::cerr << line << '\n';
    }
}

} // namespace acqsim
