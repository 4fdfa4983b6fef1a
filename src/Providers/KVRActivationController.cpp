#include "Providers/KVRActivationController.h"

#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRMerchantModel.h>

// Interim: the status report and configuration update classes are not in
// this tree yet; until they are, enrolment ends with nullResponse and sends
// nothing.
void KVRActivationController::activativateWithKovraCode(const std::string& kovraCode, const KVRCompletion& block) {
    KVRLoggingUtil::printLog("Enrolment exchange not available in this build");
    block(false, KVRErrors::nullResponse());
}

void KVRActivationController::storeMerchantWithKovraCode(const std::string& kovraCode) const {}
