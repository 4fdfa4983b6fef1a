#include "Transactions/KVRCancellationController.h"

#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRServiceEndpoint.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceBuilder.h"
#include "Host/Messages/KVRAcceptorCancellationAdviceResponse.h"
#include "Utils/KVRCardDataMasking.h"
#include "Utils/KVRStringUtil.h"

namespace {

// A reply without the element reads as a decline, like an unknown code, but
// only a readable answer says the acquirer decided.
KVRCancellationController::Verdict verdictOf(const KVRAcceptorCancellationAdviceResponse& response) {
    const auto& data = response.data;
    if (!data || !data->cancellationAdviceResponse || !data->cancellationAdviceResponse->transaction) {
        return {KVRAdviceOutcome::Unreadable, KVRErrors::transactionRejected()};
    }
    switch (data->cancellationAdviceResponse->transaction->cancellationResponse) {
        case KVRResponseCodeAPPR: return {KVRAdviceOutcome::Approved, std::nullopt};
        case KVRResponseCodePART:
        case KVRResponseCodeTECH: return {KVRAdviceOutcome::PartOrTechnical, KVRErrors::transactionFailed()};
        default: return {KVRAdviceOutcome::Declined, KVRErrors::transactionRejected()};
    }
}

}  // namespace

void KVRCancellationController::sendCancellationWithTransaction(
    const std::shared_ptr<KVRTransactionModel>& transaction, const KVRCompletion& block) {
    Verdict verdict = sendCancellationWithKeys(KVRCancellationKeys::of(*transaction));
    block(verdict.outcome == KVRAdviceOutcome::Approved, verdict.error);
}

KVRCancellationController::Verdict KVRCancellationController::sendCancellationWithKeys(const KVRCancellationKeys& keys) {
    std::string advice = KVRAcceptorCancellationAdviceBuilder::createCancellationWithKeys(keys)->write();
    KVRLoggingUtil::printLog(KVRCardDataMasking::xmlForLog(advice));
    std::optional<KVRError> error;
    auto reply = KVRCommunicationController::postXml(advice, KVRServiceEndpoint::cancellationUrl(), &error);
    if (error) {
        KVRLoggingUtil::printLog(
            KVRStringUtil::format("Error at confirmCancellation: %s", error->localizedDescription().c_str()));
    }
    KVRLoggingUtil::printLog(KVRCardDataMasking::xmlForLog(reply.value_or("")));

    if (!reply || reply->empty()) return {KVRAdviceOutcome::NoAnswer, KVRErrors::nullResponse()};
    KVRAcceptorCancellationAdviceResponse response;
    response.read(*reply);
    return verdictOf(response);
}
