#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

class KVRTransactionModel;

/// The sale entry. Precondition failures are reported at once on the caller's
/// thread; a started sale runs on the library's main worker and completes on
/// the main queue (the application's executor when installed). Amounts run
/// from 10 cents to twelve digits.
///
/// Every authorisation is journalled before it is sent; whatever the acquirer
/// approved, or may have approved, that does not end as a stored approved
/// sale is reversed (see KVRJournalProvider). The application hears the
/// results it always did; an approved sale that cannot be saved is reported
/// as `transactionFailed` and reversed.
class KOVRA_API KVRTransactionProvider {
public:
    /// A sale's completion with its transaction record: the stored record for
    /// results that keep it, none for those that delete it (invalid, timed
    /// out, failed, aborted) or when the sale never started.
    using SaleCompletion = std::function<void(bool success, std::optional<KVRError> error,
                                              std::shared_ptr<KVRTransactionModel> record)>;

    /// Amount in cents; type 0 credit, 1 debit; instalment code 0 (single
    /// payment), 1-11 (code + 1 instalments, merchant), 12+ (code - 10, issuer).
    /// The transaction identifier is accepted and not kept.
    void sendTransactionWithValue(long long value, unsigned transactionTypeSimplified, unsigned instalmentTransaction,
                                  const std::string& transactionId, KVRCompletion block);
    void sendTransactionWithValueOrderIdentification(long long value, unsigned transactionTypeSimplified,
                                                     unsigned instalmentTransaction,
                                                     const std::string& orderIdentification, KVRCompletion block);
    static void sendTransaction(const std::shared_ptr<KVRTransactionModel>& transaction, KVRCompletion block);

    /// The same sales, with the record handed back.
    void sendTransactionWithValueReturningRecord(long long value, unsigned transactionTypeSimplified,
                                                 unsigned instalmentTransaction, const std::string& transactionId,
                                                 SaleCompletion block);
    static void sendTransactionReturningRecord(const std::shared_ptr<KVRTransactionModel>& transaction,
                                               SaleCompletion block);

    // Properties an application may use for its own bookkeeping; the sale does not read them.
    std::optional<std::string> Chname, flag, reference, recipient, Acode, msgCntt, str_type, PAN, str_amount,
        str_status, RECIDX, emvData, amount, parcelas, orderId;
};
