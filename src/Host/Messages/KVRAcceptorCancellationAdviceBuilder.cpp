#include "Host/Messages/KVRAcceptorCancellationAdviceBuilder.h"

#include "Host/Messages/KVRAuthorisationRequestFactory.h"
#include "Utils/KVRClock.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

namespace {

std::shared_ptr<KVRHeader> makeHeader() {
    auto header = std::make_shared<KVRHeader>();
    header->messageFunction = KVRMessageFunctionCCAV;
    header->protocolVersion = "2.0";
    return header;
}

// Party type and issuer stay unset, so both travel as "OPOI".
std::shared_ptr<KVREnviromentData> makeEnvironment(const KVRTransactionModel& transaction) {
    auto id = std::make_shared<KVRGenericIdentification>();
    if (auto merchant = transaction.merchant()) {
        if (auto key = merchant->saleAffiliationKey()) id->identification = KVRStringUtil::removeAll(*key, '-');
    }
    auto environment = std::make_shared<KVREnviromentData>();
    environment->merchant = std::make_shared<KVRCancelMerchantData>();
    environment->merchant->genericId = id;
    return environment;
}

std::shared_ptr<KVRTransactionData> makeTransaction(const KVRTransactionModel& transaction) {
    auto original = std::make_shared<KVROriginalTransactionData>();
    original->recipientTransactionIdentification = transaction.receiptTransactionKey();
    original->initrTxId = transaction.initiatorTransactionKey();

    auto details = std::make_shared<KVRCancelTransactionDetailsData>();
    details->currency = KVRAuthorisationRequestFactory::currencyBrazilianReal;
    if (auto amount = transaction.amount()) details->totalAmount = amount->description();

    auto identification = std::make_shared<KVRCancelTransactionIdentificationData>();
    identification->transactionDateTime = KVRDateUtil::dateStringWithFormat("yyyy-MM-dd'T'HH:mm:ss", KVRClock::now());
    identification->transactionReference = transaction.reference();

    auto tx = std::make_shared<KVRTransactionData>();
    tx->originalTransaction = original;
    tx->transactionDetails = details;
    tx->transactionIndentification = identification;
    return tx;
}

}  // namespace

std::shared_ptr<KVRAcceptorCancellationAdvice> KVRAcceptorCancellationAdviceBuilder::createCancellationFactoryWithTransaction(
    const KVRTransactionModel& transaction) {
    auto body = std::make_shared<KVRCancellationAdviceData>();
    body->enviroment = makeEnvironment(transaction);
    body->transaction = makeTransaction(transaction);

    auto data = std::make_shared<KVRAcceptorCancellationAdviceData>();
    data->header = makeHeader();
    data->cancellationAdviceData = body;

    auto advice = std::make_shared<KVRAcceptorCancellationAdvice>();
    advice->data = data;
    return advice;
}
