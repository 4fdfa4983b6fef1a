#pragma once

#include <functional>
#include <memory>
#include <thread>

/// A thread that waits for the kernel's route, address and link change
/// messages (netlink) and calls back after each batch of them. Also called
/// back when poked, so a change of the reachability test flags is noticed.
class KVRNetworkChangeListener {
public:
    using Callback = std::function<void()>;

    /// Null when the netlink socket cannot be opened.
    static std::unique_ptr<KVRNetworkChangeListener> start(Callback onChange);
    /// Stops the thread and waits for it (unless called on it).
    ~KVRNetworkChangeListener();
    KVRNetworkChangeListener(const KVRNetworkChangeListener&) = delete;
    KVRNetworkChangeListener& operator=(const KVRNetworkChangeListener&) = delete;

    /// Makes every running listener call back once.
    static void pokeAll();

private:
    /// What the thread uses; kept alive by the thread itself, so the listener
    /// may be destroyed from inside its own callback.
    struct Shared;

    explicit KVRNetworkChangeListener(std::shared_ptr<Shared> shared);
    static void run(const std::shared_ptr<Shared>& shared);

    std::shared_ptr<Shared> shared_;
    std::thread thread_;
};
