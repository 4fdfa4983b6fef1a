#include <kovra/KVRCardProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRTransactionListProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRValidationProvider.h>

#include "Utils/KVRArrayUtil.h"

namespace {

KVRTransactionListProvider::Transactions newestFirst(KVRTransactionListProvider::Transactions transactions) {
    return KVRArrayUtil::sortArray(std::move(transactions), &KVRTransactionModel::date, false);
}

}  // namespace

KVRTransactionListProvider::Transactions KVRTransactionListProvider::listTransactions() {
    return newestFirst(KVRTransactionModel::findAll());
}

void KVRTransactionListProvider::listTransactionsByPan(Completion block) {
    if (!KVRValidationProvider::validatePinpadConnection()) {
        block(false, {}, KVRErrors::pinpadConnectionNotFound());
        return;
    }
    KVRCardProvider::getCardPan(
        [block = std::move(block)](bool success, std::optional<std::string> lastDigits, std::optional<KVRError> error) {
            if (!success || !lastDigits) {
                block(false, {}, std::move(error));
                return;
            }
            block(true, newestFirst(KVRTransactionModel::findAllByAttribute("pan", *lastDigits)), std::nullopt);
        });
}
