#include "Utils/KVRNetworkChangeListener.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <set>

namespace {

constexpr unsigned kGroups = RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;

std::mutex& registryMutex() {
    static auto* m = new std::mutex();
    return *m;
}

std::set<KVRNetworkChangeListener*>& registry() {
    static auto* listeners = new std::set<KVRNetworkChangeListener*>();
    return *listeners;
}

int openNetlink() {
    int fd = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE);
    if (fd < 0) return -1;
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = kGroups;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

}  // namespace

struct KVRNetworkChangeListener::Shared {
    int netlink;
    int wake;
    Callback onChange;
    std::atomic<bool> stopping{false};

    ~Shared() {
        close(netlink);
        close(wake);
    }
    void poke() const {
        uint64_t one = 1;
        [[maybe_unused]] auto written = write(wake, &one, sizeof one);
    }
    // One change often comes as several messages; reading them all first
    // makes one call back for the batch.
    void drain() const {
        char buffer[8192];
        while (recv(netlink, buffer, sizeof buffer, 0) > 0) {
        }
    }
};

std::unique_ptr<KVRNetworkChangeListener> KVRNetworkChangeListener::start(Callback onChange) {
    int netlink = openNetlink();
    if (netlink < 0) return nullptr;
    int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wake < 0) {
        close(netlink);
        return nullptr;
    }
    std::shared_ptr<Shared> shared(new Shared{netlink, wake, std::move(onChange)});
    std::unique_ptr<KVRNetworkChangeListener> listener(new KVRNetworkChangeListener(std::move(shared)));
    std::lock_guard lock(registryMutex());
    registry().insert(listener.get());
    return listener;
}

KVRNetworkChangeListener::KVRNetworkChangeListener(std::shared_ptr<Shared> shared)
    : shared_(std::move(shared)), thread_([shared = shared_] { run(shared); }) {}

KVRNetworkChangeListener::~KVRNetworkChangeListener() {
    {
        std::lock_guard lock(registryMutex());
        registry().erase(this);
    }
    shared_->stopping = true;
    shared_->poke();
    if (thread_.get_id() == std::this_thread::get_id()) thread_.detach();
    else thread_.join();
}

void KVRNetworkChangeListener::pokeAll() {
    std::lock_guard lock(registryMutex());
    for (auto* listener : registry()) listener->shared_->poke();
}

void KVRNetworkChangeListener::run(const std::shared_ptr<Shared>& shared) {
    pollfd fds[2] = {{shared->netlink, POLLIN, 0}, {shared->wake, POLLIN, 0}};
    while (!shared->stopping) {
        if (poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        if (fds[1].revents & POLLIN) {
            uint64_t count;
            [[maybe_unused]] auto got = read(shared->wake, &count, sizeof count);
        }
        if (shared->stopping) return;
        shared->drain();
        shared->onChange();
    }
}
