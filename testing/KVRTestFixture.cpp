#include "testing/KVRTestFixture.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRQueues.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRHttpsTransport.h"
#include "Persistence/KVRPersistenceController.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRCommandController.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "testing/KVRTestEnvironment.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace {

// The accessories tests add, offered before the machine's.
struct AddedAccessories {
    std::mutex mutex;
    std::vector<std::shared_ptr<KVRAccessory>> list;
};

AddedAccessories& added() {
    static auto* accessories = new AddedAccessories();
    return *accessories;
}

std::vector<std::shared_ptr<KVRAccessory>> addedThenMachine() {
    std::vector<std::shared_ptr<KVRAccessory>> list;
    {
        std::lock_guard lock(added().mutex);
        list = added().list;
    }
    auto machine = KVRAccessoryManager::machineAccessories();
    list.insert(list.end(), machine.begin(), machine.end());
    return list;
}

}  // namespace

KVRGlobalStateGuard::KVRGlobalStateGuard()
    : hooks_(KVRPlatformHooks::installed()), settings_(KVRApplicationInfo::dictionary()) {}

KVRGlobalStateGuard::~KVRGlobalStateGuard() {
    // The executor first: a completion still on its way must not reach a
    // test's loop that is gone.
    KVRQueues::setMainExecutor({});
    KVRBluetoothConnection::resetSharedController();
    KVRPinpadController::sharedController().setConnection(nullptr);
    KVRCommandController::resetCardVariables();
    KVRPersistenceController::sharedController().closeStore();
    KVRDirectories::setDataDirectory(kovraTestDataDirectory());
    if (KVRApplicationInfo::dictionary() != settings_) {
        KVRApplicationInfo::clear();
        for (const auto& [key, value] : settings_) KVRApplicationInfo::setValue(key, value);
    }
    {
        std::lock_guard lock(added().mutex);
        added().list.clear();
    }
    KVRPlatformHooks::install(*hooks_);
}

void KVRTestFixture::setClock(std::function<KVRPlatformHooks::TimePoint()> now) {
    KVRPlatformHooks::change([&](KVRPlatformHooks& hooks) { hooks.now = std::move(now); });
}

void KVRTestFixture::setUuidGenerator(std::function<std::string()> uuid) {
    KVRPlatformHooks::change([&](KVRPlatformHooks& hooks) { hooks.uuid = std::move(uuid); });
}

void KVRTestFixture::setNetworkFlags(std::optional<uint32_t> flags) {
    KVRPlatformHooks::change([&](KVRPlatformHooks& hooks) {
        hooks.networkFlags = nullptr;
        if (flags) hooks.networkFlags = [flags] { return flags; };
    });
}

void KVRTestFixture::setXmlTimeout(std::chrono::milliseconds timeout) {
    KVRPlatformHooks::change([&](KVRPlatformHooks& hooks) {
        hooks.exchange = [timeout](const KVRHttpRequest& request, std::optional<KVRError>& error) {
            auto wait = request.timeout.count() > 0 ? timeout : request.timeout;
            return KVRHttpsTransport::post(request.url, request.body, request.headers, wait,
                                           KVRCommunicationController::maximumReplyLength, error);
        };
    });
}

void KVRTestFixture::addAccessory(std::shared_ptr<KVRAccessory> accessory) {
    {
        std::lock_guard lock(added().mutex);
        added().list.push_back(std::move(accessory));
    }
    KVRPlatformHooks::change([](KVRPlatformHooks& hooks) { hooks.accessories = addedThenMachine; });
}

void KVRTestFixture::removeAccessory(const std::shared_ptr<KVRAccessory>& accessory) {
    std::lock_guard lock(added().mutex);
    auto& list = added().list;
    list.erase(std::remove(list.begin(), list.end(), accessory), list.end());
}

void KVRTestFixture::removeAllAccessories() {
    std::lock_guard lock(added().mutex);
    added().list.clear();
}
