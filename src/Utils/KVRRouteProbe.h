#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/socket.h>

/// What kind of link an interface is.
enum class KVRInterfaceKind { Loopback, Wired, Wireless, Cellular };

/// Reachability flags from the machine's routing, without sending a packet:
/// a connected UDP socket makes the kernel choose the route and source
/// address, and the interface owning that address tells the kind of link.
class KVRRouteProbe {
public:
    KVRRouteProbe() = delete;

    /// Flags of the first resolved address that has a route; 0 when the name
    /// does not resolve or nothing routes.
    static std::optional<uint32_t> flagsForHostName(const std::string& hostName);
    /// The zero address asks for any route off the machine; the network
    /// address 169.254.0.0 asks for a local link.
    static std::optional<uint32_t> flagsForAddress(const sockaddr_storage& address);

    /// Cellular modems by name (wwan*, rmnet*, ccmni*) or device type
    /// "wwan"; wireless by their "wireless" or "phy80211" entry under
    /// sysClassNet.
    static KVRInterfaceKind interfaceKind(const std::string& name, unsigned interfaceFlags,
                                          const std::string& sysClassNet = "/sys/class/net");
    static const char* kindName(KVRInterfaceKind kind);

    /// "host", "host:443", "[::1]:443" -> the host alone.
    static std::string hostWithoutPort(const std::string& host);

private:
    static std::optional<uint32_t> flagsForRoute(const sockaddr_storage& destination);
    static uint32_t flagsForLocalLink();
    static std::optional<sockaddr_storage> defaultRouteProbeAddress(int family);
};
