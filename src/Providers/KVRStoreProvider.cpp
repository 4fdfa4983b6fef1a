#include <kovra/KVRStoreProvider.h>

#include "Persistence/KVRPersistenceController.h"

KVRStoreProvider::Health KVRStoreProvider::health() {
    auto& controller = KVRPersistenceController::sharedController();
    Health health;
    health.problem = controller.storeProblem();
    health.available = controller.managedObjectContext()->hasStore();
    health.path = controller.storePath();
    health.setAsideFiles = controller.setAsideStores();
    return health;
}

void KVRStoreProvider::closeStore() { KVRPersistenceController::sharedController().closeStore(); }
