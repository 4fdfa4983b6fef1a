#pragma once

#include <string>

namespace acqsim {

// Time stamps in the forms the messages, the state file and the log use.
class SimTime {
public:
    // Local time "yyyy-MM-ddTHH:mm:ss", the form of every date-time in the messages.
    static std::string localDateTime();
    // UTC with milliseconds, "yyyy-MM-ddTHH:mm:ss.mmmZ", for the request log.
    static std::string utcStamp();
    // Local date "yyMMdd", the prefix of receipt transaction identifiers.
    static std::string localDateCompact();
};

} // namespace acqsim
