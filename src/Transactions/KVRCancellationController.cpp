#include "Transactions/KVRCancellationController.h"

#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRServiceEndpoint.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceBuilder.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceResponse.h"
#include "Utils/KVRStringUtil.h"

namespace {

// A reply without the element reads as a decline, like an unknown code.
KVRResponseCode responseCodeOf(const KVRAcceptorCancellationAdviceResponse& response) {
    const auto& data = response.data;
    if (!data || !data->cancellationAdviceResponse || !data->cancellationAdviceResponse->transaction) {
        return KVRResponseCodeDECL;
    }
    return data->cancellationAdviceResponse->transaction->cancellationResponse;
}

std::optional<KVRError> errorForResponseCode(KVRResponseCode code) {
    switch (code) {
        case KVRResponseCodeAPPR:
            return std::nullopt;
        case KVRResponseCodePART:
        case KVRResponseCodeTECH:
            return KVRErrors::transactionFailed();
        default:
            return KVRErrors::transactionRejected();
    }
}

}  // namespace

void KVRCancellationController::sendCancellationWithTransaction(
    const std::shared_ptr<KVRTransactionModel>& transaction, const KVRCompletion& block) {
    std::string advice = KVRAcceptorCancellationAdviceBuilder::createCancellationFactoryWithTransaction(*transaction)->write();
    KVRLoggingUtil::printLog(advice);
    std::optional<KVRError> error;
    auto reply = KVRCommunicationController::postXml(advice, KVRServiceEndpoint::cancellationUrl(), &error);
    if (error) {
        KVRLoggingUtil::printLog(
            KVRStringUtil::format("Error at confirmCancellation: %s", error->localizedDescription().c_str()));
    }
    KVRLoggingUtil::printLog(reply.value_or(""));

    if (!reply || reply->empty()) {
        block(false, KVRErrors::nullResponse());
        return;
    }
    KVRAcceptorCancellationAdviceResponse response;
    response.read(*reply);
    auto failure = errorForResponseCode(responseCodeOf(response));
    block(!failure, failure);
}
