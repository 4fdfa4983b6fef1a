#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

#include <memory>
#include <string>

class KVRMerchantModel;

/// Merchant enrolment by KovraCode. Precondition failures are reported at
/// once on the caller's thread; the host exchange runs on a high-priority pool
/// and completes there. After a transport failure the completion is called
/// twice: with the transport error, then with nullResponse.
class KOVRA_API KVRKovraCodeActivationProvider {
public:
    KVRKovraCodeActivationProvider() = delete;

    static void activateKovraCode(const std::string& kovraCode, KVRCompletion block);
    static void deactivateMerchant(const std::shared_ptr<KVRMerchantModel>& merchant);
    static void deactivateMerchantWithKovraCode(const std::string& kovraCode);
};
