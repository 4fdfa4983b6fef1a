#include "KovraCommandError.h"

KovraCommandError::KovraCommandError(std::string line, int exitCode, std::optional<KVRError> libraryError)
    : std::runtime_error(std::move(line)), exitCode_(exitCode), libraryError_(std::move(libraryError)) {}

KovraCommandError KovraCommandError::fromLibrary(const KVRError& error) {
    return KovraCommandError("error " + std::to_string(error.code()) + ": " + error.localizedDescription(), kFailure,
                             error);
}

KovraCommandError KovraCommandError::failure(const std::string& message) {
    return KovraCommandError("kovra: " + message, kFailure, std::nullopt);
}

KovraCommandError KovraCommandError::usage(const std::string& message) {
    return KovraCommandError("kovra: " + message, kUsage, std::nullopt);
}
