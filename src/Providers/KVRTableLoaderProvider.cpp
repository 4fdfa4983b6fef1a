#include <kovra/KVRErrors.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRValidationProvider.h>

#include "Tms/KVRTmsController.h"

void KVRTableLoaderProvider::loadTables(KVRCompletion block) {
    if (!KVRValidationProvider::validatePinpadConnection()) {
        block(false, KVRErrors::pinpadConnectionNotFound());
        return;
    }
    // The whole load holds the main worker: no other PIN pad command can slip
    // between its records.
    KVRQueues::global(KVRQueuePriority::Background).async([block] {
        KVRQueues::main().sync([&] {
            KVRTmsController tms;
            tms.loadTmsTablesToPinpadWithBlock([block](bool success, std::optional<KVRError> error) {
                KVRQueues::deliverOnMain([block, success, error] { block(success, error); });
            });
        });
    });
}
