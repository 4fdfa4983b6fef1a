#include "Utils/KVRRouteProbe.h"

#include <kovra/KVRLoggingUtil.h>

#include "Utils/KVRReachability.h"
#include "Utils/KVRStringUtil.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

namespace {

constexpr uint16_t kProbePort = 9;  // nothing is sent; any port lets connect() pick the route

socklen_t lengthOf(const sockaddr_storage& address) {
    return address.ss_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
}

/// The address bytes of an IPv4 or IPv6 socket address.
std::string addressBytes(const sockaddr* address) {
    if (address->sa_family == AF_INET) {
        const auto& in = reinterpret_cast<const sockaddr_in*>(address)->sin_addr;
        return std::string(reinterpret_cast<const char*>(&in), sizeof in);
    }
    if (address->sa_family == AF_INET6) {
        const auto& in6 = reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
        return std::string(reinterpret_cast<const char*>(&in6), sizeof in6);
    }
    return {};
}

bool sameSubnet(const std::string& a, const std::string& b, const std::string& mask) {
    if (a.size() != b.size() || a.size() != mask.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if ((a[i] & mask[i]) != (b[i] & mask[i])) return false;
    }
    return true;
}

bool isZeroAddress(const std::string& bytes) { return !bytes.empty() && bytes.find_first_not_of('\0') == std::string::npos; }

bool isLinkLocalNetwork(const sockaddr_storage& address) {
    if (address.ss_family != AF_INET) return false;
    return ntohl(reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr) == 0xA9FE0000u;  // 169.254.0.0
}

struct InterfaceAddresses {
    ifaddrs* list = nullptr;
    InterfaceAddresses() {
        if (getifaddrs(&list) != 0) list = nullptr;
    }
    ~InterfaceAddresses() {
        if (list) freeifaddrs(list);
    }
};

const ifaddrs* interfaceOwning(const InterfaceAddresses& interfaces, const sockaddr* local) {
    std::string wanted = addressBytes(local);
    for (const ifaddrs* i = interfaces.list; i; i = i->ifa_next) {
        if (i->ifa_addr && i->ifa_addr->sa_family == local->sa_family && addressBytes(i->ifa_addr) == wanted) return i;
    }
    return nullptr;
}

bool fileExists(const std::string& path) {
    std::error_code ec;
    return std::filesystem::exists(path, ec);
}

bool declaresWwanDevice(const std::string& ueventPath) {
    std::ifstream uevent(ueventPath);
    std::string line;
    while (std::getline(uevent, line)) {
        if (line == "DEVTYPE=wwan") return true;
    }
    return false;
}

/// Reachable, plus direct when the destination is on the interface's own
/// network (no gateway) and WWAN when the interface is a cellular modem.
uint32_t flagsForInterface(const ifaddrs& interface, const sockaddr_storage& destination, const sockaddr* local) {
    auto kind = KVRRouteProbe::interfaceKind(interface.ifa_name, interface.ifa_flags);
    std::string target = addressBytes(reinterpret_cast<const sockaddr*>(&destination));
    uint32_t flags = KVRReachability::kFlagReachable;
    if (target == addressBytes(local)) flags |= KVRReachability::kFlagIsLocalAddress | KVRReachability::kFlagIsDirect;
    if (kind == KVRInterfaceKind::Loopback) flags |= KVRReachability::kFlagIsDirect;
    if (interface.ifa_netmask && sameSubnet(target, addressBytes(local), addressBytes(interface.ifa_netmask))) {
        flags |= KVRReachability::kFlagIsDirect;
    }
    if (kind == KVRInterfaceKind::Cellular) flags |= KVRReachability::kFlagIsWWAN;
    KVRLoggingUtil::printLog(KVRStringUtil::format("Reachability route via %s (%s)", interface.ifa_name,
                                                   KVRRouteProbe::kindName(kind)));
    return flags;
}

}  // namespace

std::optional<uint32_t> KVRRouteProbe::flagsForHostName(const std::string& hostName) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* results = nullptr;
    if (getaddrinfo(hostName.c_str(), nullptr, &hints, &results) != 0) return 0u;
    std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(results, freeaddrinfo);
    std::optional<uint32_t> flags;
    for (const addrinfo* r = results; r; r = r->ai_next) {
        if (r->ai_family != AF_INET && r->ai_family != AF_INET6) continue;
        sockaddr_storage address{};
        std::memcpy(&address, r->ai_addr, r->ai_addrlen);
        flags = flagsForAddress(address);
        if (flags && (*flags & KVRReachability::kFlagReachable)) return flags;
    }
    return flags ? flags : std::optional<uint32_t>(0u);
}

std::optional<uint32_t> KVRRouteProbe::flagsForAddress(const sockaddr_storage& address) {
    if (isLinkLocalNetwork(address)) return flagsForLocalLink();
    if (isZeroAddress(addressBytes(reinterpret_cast<const sockaddr*>(&address)))) {
        auto probe = defaultRouteProbeAddress(address.ss_family);
        if (!probe) return std::nullopt;
        auto flags = flagsForRoute(*probe);
        // Reaching "the network" says nothing about a direct link.
        return flags ? std::optional<uint32_t>(*flags & ~KVRReachability::kFlagIsDirect) : std::nullopt;
    }
    return flagsForRoute(address);
}

std::optional<uint32_t> KVRRouteProbe::flagsForRoute(const sockaddr_storage& destination) {
    int fd = socket(destination.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return std::nullopt;
    sockaddr_storage target = destination;
    if (target.ss_family == AF_INET) reinterpret_cast<sockaddr_in&>(target).sin_port = htons(kProbePort);
    else reinterpret_cast<sockaddr_in6&>(target).sin6_port = htons(kProbePort);

    sockaddr_storage local{};
    socklen_t localLength = sizeof local;
    bool routed = connect(fd, reinterpret_cast<const sockaddr*>(&target), lengthOf(target)) == 0 &&
                  getsockname(fd, reinterpret_cast<sockaddr*>(&local), &localLength) == 0;
    close(fd);
    if (!routed) return 0u;  // no route: not reachable

    InterfaceAddresses interfaces;
    if (!interfaces.list) return std::nullopt;
    const ifaddrs* owner = interfaceOwning(interfaces, reinterpret_cast<const sockaddr*>(&local));
    if (!owner) return KVRReachability::kFlagReachable;
    // An interface without carrier keeps its routes but carries nothing.
    if (!(owner->ifa_flags & IFF_UP) || !(owner->ifa_flags & IFF_RUNNING)) return 0u;
    return flagsForInterface(*owner, destination, reinterpret_cast<const sockaddr*>(&local));
}

// A link-local probe is answered by the links themselves: any wired or
// wireless interface that is up with carrier and an address is a local link.
uint32_t KVRRouteProbe::flagsForLocalLink() {
    InterfaceAddresses interfaces;
    for (const ifaddrs* i = interfaces.list; i; i = i->ifa_next) {
        if (!i->ifa_addr || (i->ifa_addr->sa_family != AF_INET && i->ifa_addr->sa_family != AF_INET6)) continue;
        if (!(i->ifa_flags & IFF_UP) || !(i->ifa_flags & IFF_RUNNING)) continue;
        auto kind = interfaceKind(i->ifa_name, i->ifa_flags);
        if (kind == KVRInterfaceKind::Wired || kind == KVRInterfaceKind::Wireless) {
            return KVRReachability::kFlagReachable | KVRReachability::kFlagIsDirect;
        }
    }
    return 0;
}

// A documentation address: routed like any public one, never owned by anyone.
std::optional<sockaddr_storage> KVRRouteProbe::defaultRouteProbeAddress(int family) {
    sockaddr_storage address{};
    address.ss_family = static_cast<sa_family_t>(family);
    if (family == AF_INET) {
        inet_pton(AF_INET, "198.51.100.1", &reinterpret_cast<sockaddr_in&>(address).sin_addr);
        return address;
    }
    if (family == AF_INET6) {
        inet_pton(AF_INET6, "2001:db8::1", &reinterpret_cast<sockaddr_in6&>(address).sin6_addr);
        return address;
    }
    return std::nullopt;
}

KVRInterfaceKind KVRRouteProbe::interfaceKind(const std::string& name, unsigned interfaceFlags,
                                              const std::string& sysClassNet) {
    if (interfaceFlags & IFF_LOOPBACK) return KVRInterfaceKind::Loopback;
    for (const char* prefix : {"wwan", "rmnet", "ccmni"}) {
        if (KVRStringUtil::startsWith(name, prefix)) return KVRInterfaceKind::Cellular;
    }
    std::string base = sysClassNet + "/" + name;
    if (declaresWwanDevice(base + "/uevent")) return KVRInterfaceKind::Cellular;
    if (fileExists(base + "/wireless") || fileExists(base + "/phy80211")) return KVRInterfaceKind::Wireless;
    return KVRInterfaceKind::Wired;
}

const char* KVRRouteProbe::kindName(KVRInterfaceKind kind) {
    switch (kind) {
        case KVRInterfaceKind::Loopback: return "loopback";
        case KVRInterfaceKind::Wired: return "wired";
        case KVRInterfaceKind::Wireless: return "wireless";
        case KVRInterfaceKind::Cellular: return "cellular";
    }
    return "";
}

std::string KVRRouteProbe::hostWithoutPort(const std::string& host) {
    if (KVRStringUtil::startsWith(host, "[")) {
        auto close = host.find(']');
        return close == std::string::npos ? host : host.substr(1, close - 1);
    }
    auto colon = host.find(':');
    if (colon == std::string::npos || host.find(':', colon + 1) != std::string::npos) return host;  // none, or IPv6
    auto port = host.substr(colon + 1);
    bool digits = !port.empty() && port.find_first_not_of("0123456789") == std::string::npos;
    return digits ? host.substr(0, colon) : host;
}
