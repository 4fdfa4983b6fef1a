#include "Providers/KVRActivationController.h"

#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRServiceEndpoint.h"
#include "Tms/KVRStatusReportFactory.h"

void KVRActivationController::activativateWithKovraCode(const std::string& kovraCode, const KVRCompletion& block) {
    std::string request = KVRStatusReportFactory::statusReportWithKovraCode(kovraCode)->write();
    KVRLoggingUtil::printLog(request);
    std::optional<KVRError> error;
    auto reply = KVRCommunicationController::postXml(request, KVRServiceEndpoint::tmsUrl(), &error);
    // A transport failure is reported and the empty reply is judged as well:
    // callers hear about it twice, the second time as nullResponse.
    if (error) block(false, error);

    if (!reply || reply->empty()) {
        block(false, KVRErrors::nullResponse());
        return;
    }
    authorisationResponse = std::make_shared<KVRAcceptorConfigurationUpdate>();
    authorisationResponse->read(*reply);
    if (!authorisationResponse->data) {
        block(false, KVRErrors::nullResponse());
        return;
    }
    KVRLoggingUtil::printLog(*reply);
    block(true, std::nullopt);
}
