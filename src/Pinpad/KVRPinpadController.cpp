#include "Pinpad/KVRPinpadController.h"

#include <kovra/KVRLoggingUtil.h>

#include "Pinpad/KVRBluetoothConnection.h"
#include "Platform/KVRAccessory.h"
#include "Platform/KVRAccessoryManager.h"

KVRPinpadController& KVRPinpadController::sharedController() {
    static auto* controller = new KVRPinpadController();  // lives for the process
    return *controller;
}

void KVRPinpadController::useSharedLink() {
    setConnection(KVRBluetoothConnection::sharedController());
    KVRLoggingUtil::printLog("accessoryDidConnect");
}

void KVRPinpadController::connectWithPaired() {
    useSharedLink();
    auto accessories = KVRAccessoryManager::sharedAccessoryManager().connectedAccessories();
    if (accessories.empty()) return;
    connectWithBluetooth(accessories.front());
}

void KVRPinpadController::connectWithBluetooth(const std::shared_ptr<KVRAccessory>& accessory) {
    useSharedLink();
    if (!accessory) return;
    auto link = KVRBluetoothConnection::sharedController();
    // The first protocol a session opens with stays in use: openSession keeps
    // an existing session, so later strings only re-open the same streams.
    for (const std::string& protocol : accessory->protocolStrings()) {
        link->setupControllerForAccessory(accessory, protocol);
        link->openSession();
    }
}

bool KVRPinpadController::abortCurrentCommand() {
    auto link = connection();
    return link && link->abortCurrentCommand();
}

std::shared_ptr<KVRConnectionProtocol> KVRPinpadController::connection() const {
    std::lock_guard lock(mutex_);
    return connection_;
}

void KVRPinpadController::setConnection(std::shared_ptr<KVRConnectionProtocol> connection) {
    std::lock_guard lock(mutex_);
    connection_ = std::move(connection);
}
