#pragma once

#include <kovra/KVRCompletion.h>

#include "Tms/KVRAcceptorConfigurationUpdate.h"

#include <memory>
#include <string>

/// One merchant enrolment: the status report naming the KovraCode goes to the
/// terminal-management host, and the configuration update that comes back is
/// kept in `authorisationResponse` for the provider to store.
class KVRActivationController {
public:
    /// The parsed reply (a configuration update, whatever the name says).
    std::shared_ptr<KVRAcceptorConfigurationUpdate> authorisationResponse;

    /// Blocks for the host exchange. After a transport failure the block is
    /// called twice: with the transport error, then with nullResponse.
    void activativateWithKovraCode(const std::string& kovraCode, const KVRCompletion& block);
};
