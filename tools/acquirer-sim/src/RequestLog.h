#pragma once

#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>

namespace acqsim {

// One line per request, appended and flushed at once, so a test can tell
// what reached the acquirer (and that nothing did):
//   2025-06-01T12:00:00.123Z POST /Authorize 200 APPR amount=1500 rcpt=2506010000000001 pan=476173******0010
// Card data in outcomes goes through CardDataMask. Each line is echoed to standard error.
class RequestLog {
public:
    explicit RequestLog(std::filesystem::path file, bool echo = true);

    void write(const std::string& method, const std::string& path, int status, const std::string& outcome);

private:
    std::mutex mutex_;
    std::ofstream out_;
    bool echo_;
};

} // namespace acqsim
