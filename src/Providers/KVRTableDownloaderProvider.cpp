#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRValidationProvider.h>

#include "Tms/KVRTmsController.h"
#include "Utils/KVRStringUtil.h"
#include "Transactions/KVRRecoveryScheduler.h"

namespace {

void download(const KVRCompletion& block) {
    // With several merchants enrolled, the first one stored is the one asked for.
    auto merchant = KVRMerchantModel::findFirst();
    std::optional<std::string> key = merchant ? merchant->saleAffiliationKey() : std::nullopt;
    bool reported = false;
    try {
        KVRTmsController tms;
        tms.downloadTablesWithSaleAffiliationKey(key, [&](bool success, std::optional<KVRError> error) {
            reported = true;
            block(success, std::move(error));
        });
    } catch (const std::exception& e) {
        KVRLoggingUtil::console(KVRStringUtil::format("Table download failed: %s", e.what()));
        if (!reported) block(false, KVRErrors::nullResponse());
    }
}

}  // namespace

void KVRTableDownloaderProvider::downLoadTables(KVRCompletion block) {
    if (!KVRValidationProvider::validateConnectionToNetWork()) {
        block(false, KVRErrors::notConnectedToNetwork());
        return;
    }
    if (!KVRValidationProvider::validateActivation()) {
        block(false, KVRErrors::missingKovracodeActivation());
        return;
    }
    KVRRecoveryScheduler::libraryUsed();
    KVRQueues::global(KVRQueuePriority::High).async([block] {
        KVRRecoveryScheduler::runNow();
        download(block);
    });
}
