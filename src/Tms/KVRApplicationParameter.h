#pragma once

#include <optional>
#include <string>

struct TBXMLElement;

/// `ApplParams`: parameters of a payment application.
class KVRApplicationParameter {
public:
    std::optional<std::string> applicationIdentification;  // ApplId
    /// `Vrsn` is recognised but not converted: the version stays 0.
    float version = 0;
    std::optional<std::string> parameters;                 // Params

    void read(const TBXMLElement* firstChild);
};
