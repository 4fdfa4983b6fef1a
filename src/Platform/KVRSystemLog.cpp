#include "Platform/KVRSystemLog.h"

#include <mutex>
#include <syslog.h>

namespace {

void write(int priority, const std::string& line) {
    // Opened lazily, so that a process that never logs never touches syslog.
    static std::once_flag opened;
    std::call_once(opened, [] { openlog("kovra", LOG_PID, LOG_USER); });
    syslog(priority, "%s", line.c_str());
}

}  // namespace

void KVRSystemLog::info(const std::string& line) { write(LOG_INFO, line); }

void KVRSystemLog::debug(const std::string& line) { write(LOG_DEBUG, line); }
