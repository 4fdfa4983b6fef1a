#include <kovra/KVRTransacInfoProvider.h>
#include <kovra/KVRTransactionModel.h>

#include "Utils/KVRStringUtil.h"

KVRTransacInfoProvider::KVRTransacInfoProvider(const std::shared_ptr<KVRTransactionModel>& transaction) {
    if (!transaction) return;
    if (auto value = transaction->amount()) amount = value->description();
    instalments = KVRStringUtil::format("%u", static_cast<unsigned>(transaction->instalmentAmount()));
    aid = transaction->aid();
    arqc = transaction->arqc();
    type = transaction->typeString();
    status = transaction->statusString();
    if (transaction->date()) date = transaction->dateString();
    receiptTransactionKey = transaction->receiptTransactionKey();
    reference = transaction->reference();
    pan = transaction->pan();
    flag = transaction->cardBrand();
    cardHolderName = transaction->cardHolderName();
    authorisationCode = transaction->authorisationCode();
    transactionId = transaction->initiatorTransactionKey();
}
