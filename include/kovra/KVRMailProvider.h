#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

#include <memory>
#include <string>

class KVRTransactionModel;

/// E-mail receipts and feedback through the mail service. Completions are
/// delivered on the main queue.
class KOVRA_API KVRMailProvider {
public:
    static constexpr int kReceiptSale = 1;
    static constexpr int kReceiptCancellation = 2;

    KVRMailProvider() = delete;

    static void sendReceiptViaEmail(int receiptKind, const std::shared_ptr<KVRTransactionModel>& transaction,
                                    const std::string& destination, bool displayCompanyInformation,
                                    KVRCompletion block);
    static void sendEmailFeedback(const std::string& message, KVRCompletion block);
};
