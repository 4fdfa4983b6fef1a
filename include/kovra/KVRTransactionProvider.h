#pragma once

#include <kovra/KVRCompletion.h>

#include <memory>
#include <optional>
#include <string>

class KVRTransactionModel;

/// The sale entry. Precondition failures are reported at once on the caller's
/// thread; a started sale runs on the library's main worker and completes on
/// the main queue (the application's executor when installed).
class KVRTransactionProvider {
public:
    /// Amount in cents; type 0 credit, 1 debit; instalment code 0 (single
    /// payment), 1-11 (code + 1 instalments, merchant), 12+ (code - 10, issuer).
    /// The transaction identifier is accepted and not kept.
    void sendTransactionWithValue(long long value, unsigned transactionTypeSimplified, unsigned instalmentTransaction,
                                  const std::string& transactionId, KVRCompletion block);
    void sendTransactionWithValueOrderIdentification(long long value, unsigned transactionTypeSimplified,
                                                     unsigned instalmentTransaction,
                                                     const std::string& orderIdentification, KVRCompletion block);
    static void sendTransaction(const std::shared_ptr<KVRTransactionModel>& transaction, KVRCompletion block);

    // Properties an application may use for its own bookkeeping; the sale does not read them.
    std::optional<std::string> Chname, flag, reference, recipient, Acode, msgCntt, str_type, PAN, str_amount,
        str_status, RECIDX, emvData, amount, parcelas, orderId;
};
