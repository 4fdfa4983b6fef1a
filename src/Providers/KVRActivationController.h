#pragma once

#include <kovra/KVRCompletion.h>

#include <string>

/// One merchant enrolment: the status report naming the KovraCode goes to the
/// terminal-management host, and the configuration update that comes back is
/// kept for the provider to store.
class KVRActivationController {
public:
    /// Blocks for the host exchange. After a transport failure the block is
    /// called twice: with the transport error, then with nullResponse.
    void activativateWithKovraCode(const std::string& kovraCode, const KVRCompletion& block);

    /// Records a merchant with the code and the merchant parameters of the
    /// reply (empty fields when the reply carried none).
    void storeMerchantWithKovraCode(const std::string& kovraCode) const;
};
