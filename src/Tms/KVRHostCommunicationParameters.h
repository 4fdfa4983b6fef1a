#pragma once

#include "Host/Messages/KVRHostAddress.h"

#include <memory>
#include <optional>
#include <string>

struct TBXMLElement;

/// `HstComParams`: a host the configuration names. Informative only: every
/// exchange goes to the library's fixed endpoints.
class KVRHostCommunicationParameters {
public:
    std::optional<std::string> hostIdentification;  // HstId
    std::shared_ptr<KVRHostAddress> addressData;    // Adr

    void read(const TBXMLElement* firstChild);
};
