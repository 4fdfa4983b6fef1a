#pragma once

#include <kovra/KVRError.h>
#include <kovra/KVRExport.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class KVRTransactionModel;

/// The stored transactions, newest first.
class KOVRA_API KVRTransactionListProvider {
public:
    using Transactions = std::vector<std::shared_ptr<KVRTransactionModel>>;
    using Completion = std::function<void(bool success, Transactions transactions, std::optional<KVRError> error)>;

    KVRTransactionListProvider() = delete;

    static Transactions listTransactions();
    /// Reads a card on the PIN pad and lists the transactions of that card.
    static void listTransactionsByPan(Completion block);
};
