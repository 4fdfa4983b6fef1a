#pragma once

#include <stdexcept>
#include <string>

namespace acqsim {

// Thrown while checking a request; the handler turns it into a rejection
// reply. `reasonCode` is the four-letter ISO 20022 rejection reason.
class RequestRejected : public std::runtime_error {
public:
    RequestRejected(std::string reasonCode, const std::string& detail)
        : std::runtime_error(detail), reasonCode_(std::move(reasonCode)) {}

    const std::string& reasonCode() const { return reasonCode_; }

private:
    std::string reasonCode_;
};

} // namespace acqsim
