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
std::shared_ptr<KVREnviromentData> makeEnvironment(const KVRCancellationKeys& keys) {
    auto id = std::make_shared<KVRGenericIdentification>();
    if (keys.saleAffiliationKey) id->identification = KVRStringUtil::removeAll(*keys.saleAffiliationKey, '-');
    auto environment = std::make_shared<KVREnviromentData>();
    environment->merchant = std::make_shared<KVRCancelMerchantData>();
    environment->merchant->genericId = id;
    return environment;
}

std::shared_ptr<KVRTransactionData> makeTransaction(const KVRCancellationKeys& keys) {
    auto original = std::make_shared<KVROriginalTransactionData>();
    original->recipientTransactionIdentification = keys.receiptTransactionKey;
    original->initrTxId = keys.initiatorTransactionKey;

    auto details = std::make_shared<KVRCancelTransactionDetailsData>();
    details->currency = KVRAuthorisationRequestFactory::currencyBrazilianReal;
    details->totalAmount = keys.amount;

    auto identification = std::make_shared<KVRCancelTransactionIdentificationData>();
    identification->transactionDateTime = KVRDateUtil::dateStringWithFormat("yyyy-MM-dd'T'HH:mm:ss", KVRClock::now());
    identification->transactionReference = keys.reference;

    auto tx = std::make_shared<KVRTransactionData>();
    tx->originalTransaction = original;
    tx->transactionDetails = details;
    tx->transactionIndentification = identification;
    return tx;
}

}  // namespace

KVRCancellationKeys KVRCancellationKeys::of(const KVRTransactionModel& transaction) {
    KVRCancellationKeys keys;
    if (auto merchant = transaction.merchant()) keys.saleAffiliationKey = merchant->saleAffiliationKey();
    keys.receiptTransactionKey = transaction.receiptTransactionKey();
    keys.initiatorTransactionKey = transaction.initiatorTransactionKey();
    keys.reference = transaction.reference();
    if (auto amount = transaction.amount()) keys.amount = amount->description();
    return keys;
}

std::shared_ptr<KVRAcceptorCancellationAdvice> KVRAcceptorCancellationAdviceBuilder::createCancellationFactoryWithTransaction(
    const KVRTransactionModel& transaction) {
    return createCancellationWithKeys(KVRCancellationKeys::of(transaction));
}

std::shared_ptr<KVRAcceptorCancellationAdvice> KVRAcceptorCancellationAdviceBuilder::createCancellationWithKeys(
    const KVRCancellationKeys& keys) {
    auto body = std::make_shared<KVRCancellationAdviceData>();
    body->enviroment = makeEnvironment(keys);
    body->transaction = makeTransaction(keys);

    auto data = std::make_shared<KVRAcceptorCancellationAdviceData>();
    data->header = makeHeader();
    data->cancellationAdviceData = body;

    auto advice = std::make_shared<KVRAcceptorCancellationAdvice>();
    advice->data = data;
    return advice;
}
