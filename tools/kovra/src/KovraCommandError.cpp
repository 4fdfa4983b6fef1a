#include "KovraCommandError.h"

KovraCommandError::KovraCommandError(std::string line, int exitCode)
    : std::runtime_error(std::move(line)), exitCode_(exitCode) {}

KovraCommandError KovraCommandError::fromLibrary(const KVRError& error) {
    return KovraCommandError("error " + std::to_string(error.code()) + ": " + error.localizedDescription(), kFailure);
}

KovraCommandError KovraCommandError::failure(const std::string& message) {
    return KovraCommandError("kovra: " + message, kFailure);
}

KovraCommandError KovraCommandError::usage(const std::string& message) {
    return KovraCommandError("kovra: " + message, kUsage);
}
