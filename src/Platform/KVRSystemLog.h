#pragma once

#include <string>

/// The platform's console log. On Linux that is the system log (syslog, and
/// so journald where it runs), with the ident "kovra" and the process id.
class KVRSystemLog {
public:
    KVRSystemLog() = delete;

    /// A line that is always logged (PIN pad traffic, problems).
    static void info(const std::string& line);
    /// A line of the debug log.
    static void debug(const std::string& line);
};
