#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <sys/socket.h>

class KVRNetworkChangeListener;

/// 0 not reachable, 1 reachable over a local (Wi-Fi or wired) link, 2 reachable
/// over the cellular (WWAN) link.
enum KVRNetworkStatus { NotReachable = 0, ReachableViaWiFi = 1, ReachableViaWWAN = 2 };

/// Whether a host or address can be reached now, and over which kind of link.
/// The answer is read from the machine's routing: the target is resolved and
/// the route and outgoing interface for it are looked up, without sending a
/// packet, unless the installed platform hooks report the flags. The flags use
/// the platform's bit values, so the status rules read the same everywhere.
class KVRReachability : public std::enable_shared_from_this<KVRReachability> {
public:
    static constexpr uint32_t kFlagTransientConnection = 1u << 0;
    static constexpr uint32_t kFlagReachable = 1u << 1;
    static constexpr uint32_t kFlagConnectionRequired = 1u << 2;
    static constexpr uint32_t kFlagConnectionOnTraffic = 1u << 3;
    static constexpr uint32_t kFlagInterventionRequired = 1u << 4;
    static constexpr uint32_t kFlagConnectionOnDemand = 1u << 5;
    static constexpr uint32_t kFlagIsLocalAddress = 1u << 16;
    static constexpr uint32_t kFlagIsDirect = 1u << 17;
    static constexpr uint32_t kFlagIsWWAN = 1u << 18;

    static constexpr const char* kNetworkReachabilityChangedNotification = "kNetworkReachabilityChangedNotification";

    /// A host name, an IP address text, or either with ":port" (ignored).
    /// Null for an empty name.
    static std::shared_ptr<KVRReachability> reachabilityWithHostName(const std::string& hostName);
    /// An IPv4 or IPv6 socket address; null for another family.
    static std::shared_ptr<KVRReachability> reachabilityWithAddress(const struct sockaddr* hostAddress);
    /// The zero address: whether the machine has a route off itself at all.
    static std::shared_ptr<KVRReachability> reachabilityForInternetConnection();
    /// The link-local network 169.254.0.0: whether a local link is up.
    static std::shared_ptr<KVRReachability> reachabilityForLocalWiFi();

    ~KVRReachability();
    KVRReachability(const KVRReachability&) = delete;
    KVRReachability& operator=(const KVRReachability&) = delete;

    /// Listens for route and link changes; whenever the flags of this target
    /// change, posts kNetworkReachabilityChangedNotification with this
    /// instance (a std::shared_ptr<KVRReachability>) as object, on the
    /// listener's thread. False when the listener cannot be started.
    bool startNotifier();
    void stopNotifier();

    KVRNetworkStatus currentReachabilityStatus() const;
    bool connectionRequired() const;
    /// The current flags; none when they cannot be read.
    std::optional<uint32_t> reachabilityFlags() const;

    static KVRNetworkStatus networkStatusForFlags(uint32_t flags);
    static KVRNetworkStatus localWiFiStatusForFlags(uint32_t flags);

private:
    KVRReachability(std::string hostName, std::optional<sockaddr_storage> address, bool localWiFi);
    std::optional<uint32_t> machineFlags() const;
    void flagsMayHaveChanged();
    static void logFlags(uint32_t flags, const char* comment);

    const std::string hostName_;
    const std::optional<sockaddr_storage> address_;
    const bool localWiFi_;

    std::mutex notifierMutex_;
    std::unique_ptr<KVRNetworkChangeListener> listener_;
    std::optional<uint32_t> lastFlags_;
};
