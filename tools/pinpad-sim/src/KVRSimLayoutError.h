#pragma once

#include <stdexcept>
#include <string>

/// A request whose text does not follow its command's layout. The message
/// names the field and the rule it breaks, never the field's value, so that
/// card data stays out of the log.
class KVRSimLayoutError : public std::runtime_error {
public:
    explicit KVRSimLayoutError(const std::string& message) : std::runtime_error(message) {}
};
