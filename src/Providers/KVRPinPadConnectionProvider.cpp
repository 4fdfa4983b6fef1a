#include <kovra/KVRErrors.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRPinPadConnectionProvider.h>

#include "Persistence/KVRDataBaseController.h"
#include "Pinpad/KVRConnectionProtocol.h"
#include "Pinpad/KVRPinpadController.h"
#include "Transactions/KVRRecoveryScheduler.h"

// Runs on the caller's thread: the link's streams belong to no thread of
// their own, so the caller only has to wait for the session to open.
void KVRPinPadConnectionProvider::connectToPinpad(KVRCompletion block) {
    // Every connection first brings the legacy transaction file into the store.
    KVRDataBaseController::getsharedInstance().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);
    KVRRecoveryScheduler::libraryUsed();

    auto& controller = KVRPinpadController::sharedController();
    controller.connectWithPaired();
    auto link = controller.connection();
    if (link && link->isDeviceConnected()) {
        block(true, std::nullopt);
    } else {
        block(false, KVRErrors::pinpadConnectionNotFound());
    }
}

bool KVRPinPadConnectionProvider::abortCurrentCommand() { return KVRPinpadController::sharedController().abortCurrentCommand(); }
