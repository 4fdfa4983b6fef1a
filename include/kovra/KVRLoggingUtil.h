#pragma once

#include <kovra/KVRExport.h>

#include <functional>
#include <string>

/// Library logging. Debug lines are printed only when the information
/// dictionary's "Kovra Debugginho Developer" is true; console lines (the PIN
/// pad traffic among them) always. Both go to the application's sink when it
/// set one; otherwise to the system log (ident "kovra"), or to standard error
/// when the environment variable KOVRA_LOG is "stderr".
class KOVRA_API KVRLoggingUtil {
public:
    using Sink = std::function<void(const std::string& line)>;

    KVRLoggingUtil() = delete;

    static void printLog(const std::string& text);
    static void console(const std::string& text);
    /// An empty sink restores the default destination.
    static void setSink(Sink sink);
    static bool isDebugEnabled();
    /// "Kovra Log Card Data": whether PIN pad lines may show card data unmasked.
    static bool logsCardData();
};
