#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

#include <memory>

class KVRTransactionModel;

/// Cancels an approved sale at the acquirer; on approval the stored
/// transaction's status becomes 5. Completes on a high-priority pool.
class KOVRA_API KVRCancellationProvider {
public:
    KVRCancellationProvider() = delete;

    static void cancelTransaction(const std::shared_ptr<KVRTransactionModel>& transaction, KVRCompletion block);
};
