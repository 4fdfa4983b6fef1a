#include "Utils/KVRPlatformHooks.h"

#include "Utils/KVRNetworkChangeListener.h"

#include <mutex>

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
    {
        std::lock_guard lock(current().mutex);
        KVRPlatformHooks hooks = *current().hooks;
        edit(hooks);
        current().hooks = std::make_shared<const KVRPlatformHooks>(std::move(hooks));
    }
    KVRNetworkChangeListener::pokeAll();
}

KVRPlatformHooks KVRPlatformHooks::install(KVRPlatformHooks hooks) {
    auto replacing = std::make_shared<const KVRPlatformHooks>(std::move(hooks));
    {
        std::lock_guard lock(current().mutex);
        std::swap(current().hooks, replacing);
    }
    // Outside the lock: a poked notifier reads the flags through installed().
    KVRNetworkChangeListener::pokeAll();
    return *replacing;
}
