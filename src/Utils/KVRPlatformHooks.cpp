#include "Utils/KVRPlatformHooks.h"

#include "Utils/KVRNetworkChangeListener.h"

#include <mutex>
#include <utility>

namespace {
struct Installed {
    std::mutex mutex;
    std::shared_ptr<const KVRPlatformHooks> hooks = std::make_shared<const KVRPlatformHooks>();
};

Installed& current() {
    static auto* installed = new Installed();  // read by threads that outlive static destruction
    return *installed;
}
}  // namespace

std::shared_ptr<const KVRPlatformHooks> KVRPlatformHooks::installed() {
    std::lock_guard lock(current().mutex);
    return current().hooks;
}

void KVRPlatformHooks::change(const std::function<void(KVRPlatformHooks& hooks)>& edit) {
    // The set replaced is let go outside the lock, as is the poke: a hook's
    // captures and a poked notifier may read the hooks again.
    std::shared_ptr<const KVRPlatformHooks> replaced;
    {
        std::lock_guard lock(current().mutex);
        KVRPlatformHooks hooks = *current().hooks;
        edit(hooks);
        replaced = std::exchange(current().hooks, std::make_shared<const KVRPlatformHooks>(std::move(hooks)));
    }
    KVRNetworkChangeListener::pokeAll();
}

KVRPlatformHooks KVRPlatformHooks::install(KVRPlatformHooks hooks) {
    KVRPlatformHooks replaced;
    change([&](KVRPlatformHooks& inForce) { replaced = std::exchange(inForce, std::move(hooks)); });
    return replaced;
}
