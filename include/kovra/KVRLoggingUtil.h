#pragma once

#include <kovra/KVRExport.h>

#include <functional>
#include <string>

/// Library logging. Debug lines are printed only when the information
/// dictionary's "Kovra Debugginho Developer" is true; console lines always.
/// Both go to one sink, standard error unless the application replaces it.
class KOVRA_API KVRLoggingUtil {
public:
    using Sink = std::function<void(const std::string& line)>;

    KVRLoggingUtil() = delete;

    static void printLog(const std::string& text);
    static void console(const std::string& text);
    /// An empty sink restores standard error.
    static void setSink(Sink sink);
    static bool isDebugEnabled();
    /// "Kovra Log Card Data": whether PIN pad lines may show card data unmasked.
    static bool logsCardData();
};
