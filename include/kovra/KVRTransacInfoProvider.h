#pragma once

#include <kovra/KVRExport.h>

#include <memory>
#include <optional>
#include <string>

class KVRTransactionModel;

/// A flat, text-valued view of one stored transaction.
class KOVRA_API KVRTransacInfoProvider {
public:
    explicit KVRTransacInfoProvider(const std::shared_ptr<KVRTransactionModel>& transaction);

    std::optional<std::string> uniqueId;
    std::optional<std::string> amount;
    std::optional<std::string> instalments;
    std::optional<std::string> aid;
    std::optional<std::string> arqc;
    std::optional<std::string> type;
    std::optional<std::string> status;
    std::optional<std::string> date;
    std::optional<std::string> receiptTransactionKey;
    std::optional<std::string> reference;
    std::optional<std::string> pan;
    std::optional<std::string> flag;
    std::optional<std::string> cardHolderName;
    std::optional<std::string> authorisationCode;
    std::optional<std::string> transactionId;
};
