#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

#include <string>

/// The PIN pad's identity. Text fields keep their trailing spaces.
class KVRGinCommandResponse : public KVRBaseCommandResponse {
public:
    KVRGinCommandResponse() = default;
    explicit KVRGinCommandResponse(const char* response);

    std::string name;          // 20
    std::string model;         // 19
    std::string ctlssup;       // 1
    std::string sover;         // 20
    std::string specver;       // 4
    std::string manver;        // 16
    std::string serialNumber;  // 20
};
