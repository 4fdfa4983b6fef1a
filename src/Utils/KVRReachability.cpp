#include "Utils/KVRReachability.h"

#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRNotificationCenter.h>

#include "Utils/KVRNetworkChangeListener.h"
#include "Utils/KVRPlatformHooks.h"
#include "Utils/KVRRouteProbe.h"
#include "Utils/KVRStringUtil.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstring>

namespace {

sockaddr_storage ipv4Address(uint32_t hostOrderAddress) {
    sockaddr_storage storage{};
    auto& address = reinterpret_cast<sockaddr_in&>(storage);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(hostOrderAddress);
    return storage;
}

constexpr uint32_t kLinkLocalNetwork = 0xA9FE0000u;  // 169.254.0.0

}  // namespace

KVRReachability::KVRReachability(std::string hostName, std::optional<sockaddr_storage> address, bool localWiFi)
    : hostName_(std::move(hostName)), address_(address), localWiFi_(localWiFi) {}

KVRReachability::~KVRReachability() { stopNotifier(); }

std::shared_ptr<KVRReachability> KVRReachability::reachabilityWithHostName(const std::string& hostName) {
    std::string host = KVRRouteProbe::hostWithoutPort(KVRStringUtil::trim(hostName));
    if (host.empty()) return nullptr;
    return std::shared_ptr<KVRReachability>(new KVRReachability(host, std::nullopt, false));
}

std::shared_ptr<KVRReachability> KVRReachability::reachabilityWithAddress(const struct sockaddr* hostAddress) {
    if (!hostAddress || (hostAddress->sa_family != AF_INET && hostAddress->sa_family != AF_INET6)) return nullptr;
    sockaddr_storage storage{};
    std::memcpy(&storage, hostAddress, hostAddress->sa_family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6));
    return std::shared_ptr<KVRReachability>(new KVRReachability("", storage, false));
}

std::shared_ptr<KVRReachability> KVRReachability::reachabilityForInternetConnection() {
    sockaddr_storage zero = ipv4Address(INADDR_ANY);
    return reachabilityWithAddress(reinterpret_cast<const sockaddr*>(&zero));
}

std::shared_ptr<KVRReachability> KVRReachability::reachabilityForLocalWiFi() {
    sockaddr_storage linkLocal = ipv4Address(kLinkLocalNetwork);
    return std::shared_ptr<KVRReachability>(new KVRReachability("", linkLocal, true));
}

bool KVRReachability::startNotifier() {
    std::lock_guard lock(notifierMutex_);
    if (listener_) return true;
    lastFlags_ = reachabilityFlags();
    std::weak_ptr<KVRReachability> weakSelf = weak_from_this();
    listener_ = KVRNetworkChangeListener::start([weakSelf] {
        auto self = weakSelf.lock();
        if (!self) {
            KVRLoggingUtil::printLog("info was NULL in ReachabilityCallback");
            return;
        }
        self->flagsMayHaveChanged();
    });
    return listener_ != nullptr;
}

void KVRReachability::stopNotifier() {
    std::unique_ptr<KVRNetworkChangeListener> listener;
    {
        std::lock_guard lock(notifierMutex_);
        listener = std::move(listener_);
    }
    // Stopped outside the lock: the callback being waited for may take it.
}

void KVRReachability::flagsMayHaveChanged() {
    auto flags = reachabilityFlags();
    {
        std::lock_guard lock(notifierMutex_);
        if (flags == lastFlags_) return;
        lastFlags_ = flags;
    }
    KVRNotificationCenter::defaultCenter().postNotification(kNetworkReachabilityChangedNotification, shared_from_this());
}

std::optional<uint32_t> KVRReachability::reachabilityFlags() const {
    auto hooks = KVRPlatformHooks::installed();
    return hooks->networkFlags ? hooks->networkFlags() : machineFlags();
}

std::optional<uint32_t> KVRReachability::machineFlags() const {
    if (address_) return KVRRouteProbe::flagsForAddress(*address_);
    return KVRRouteProbe::flagsForHostName(hostName_);
}

KVRNetworkStatus KVRReachability::currentReachabilityStatus() const {
    auto flags = reachabilityFlags();
    if (!flags) return NotReachable;
    return localWiFi_ ? localWiFiStatusForFlags(*flags) : networkStatusForFlags(*flags);
}

bool KVRReachability::connectionRequired() const {
    auto flags = reachabilityFlags();
    return flags && (*flags & kFlagConnectionRequired);
}

KVRNetworkStatus KVRReachability::networkStatusForFlags(uint32_t flags) {
    logFlags(flags, "networkStatusForFlags");
    if (!(flags & kFlagReachable)) return NotReachable;
    KVRNetworkStatus status = NotReachable;
    if (!(flags & kFlagConnectionRequired)) status = ReachableViaWiFi;
    // A connection made on demand or on traffic counts, unless the user has to act.
    if ((flags & (kFlagConnectionOnDemand | kFlagConnectionOnTraffic)) && !(flags & kFlagInterventionRequired)) {
        status = ReachableViaWiFi;
    }
    if (flags & kFlagIsWWAN) status = ReachableViaWWAN;
    return status;
}

KVRNetworkStatus KVRReachability::localWiFiStatusForFlags(uint32_t flags) {
    logFlags(flags, "localWiFiStatusForFlags");
    return (flags & kFlagReachable) && (flags & kFlagIsDirect) ? ReachableViaWiFi : NotReachable;
}

void KVRReachability::logFlags(uint32_t flags, const char* comment) {
    auto flag = [flags](uint32_t bit, char set) { return (flags & bit) ? set : '-'; };
    KVRLoggingUtil::printLog(KVRStringUtil::format(
        "Reachability Flag Status: %c%c %c%c%c%c%c%c%c %s\n", flag(kFlagIsWWAN, 'W'), flag(kFlagReachable, 'R'),
        flag(kFlagTransientConnection, 't'), flag(kFlagConnectionRequired, 'c'), flag(kFlagConnectionOnTraffic, 'C'),
        flag(kFlagInterventionRequired, 'i'), flag(kFlagConnectionOnDemand, 'D'), flag(kFlagIsLocalAddress, 'l'),
        flag(kFlagIsDirect, 'd'), comment));
}
