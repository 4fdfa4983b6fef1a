#pragma once

#include <string>

namespace acqsim {

// What a route answers, plus the line the request log gets for it.
struct SimReply {
    int status = 200;
    std::string contentType = "text/xml";
    std::string body;
    std::string outcome;          // short text for the request log; never card data
    double delaySeconds = 0;      // held back this long before the answer goes out
};

} // namespace acqsim
