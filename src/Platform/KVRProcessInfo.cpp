#include "Platform/KVRProcessInfo.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

long long KVRProcessInfo::currentIdentifier() { return static_cast<long long>(::getpid()); }

bool KVRProcessInfo::isRunning(long long identifier) {
    if (identifier <= 0) return false;
    return ::kill(static_cast<pid_t>(identifier), 0) == 0 || errno == EPERM;
}
