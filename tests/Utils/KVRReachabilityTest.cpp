#include <gtest/gtest.h>

#include "Utils/KVRReachability.h"
#include "Utils/KVRRouteProbe.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/un.h>

#include <ostream>

namespace {

using R = KVRReachability;

// Whether a sale may go on line: a connection that needs the user's
// intervention or one that is not made on traffic counts as no network.
TEST(KVRReachability, NetworkStatusForFlags) {
    const uint32_t reach = R::kFlagReachable, required = R::kFlagConnectionRequired,
                   onTraffic = R::kFlagConnectionOnTraffic, onDemand = R::kFlagConnectionOnDemand,
                   intervention = R::kFlagInterventionRequired, wwan = R::kFlagIsWWAN;
    const std::pair<uint32_t, KVRNetworkStatus> table[] = {
        {0, NotReachable},
        {reach | R::kFlagIsDirect | intervention, ReachableViaWiFi},
        {reach | required, NotReachable},
        {reach | required | onTraffic, ReachableViaWiFi},
        {reach | required | onDemand, ReachableViaWiFi},
        {reach | required | onDemand | intervention, NotReachable},
        {reach | required | intervention | onDemand | wwan, ReachableViaWWAN},  // WWAN overrides
        {wwan, NotReachable},                                                  // but only when reachable
    };
    for (const auto& [flags, status] : table) {
        EXPECT_EQ(KVRReachability::networkStatusForFlags(flags), status) << "flags 0x" << std::hex << flags;
    }
}

TEST(KVRReachability, LoopbackIsReachableByNameOrAddressAndUnprobeableTargetsAreRefused) {
    for (const char* name : {"127.0.0.1", "localhost", "127.0.0.1:8443", " localhost "}) {
        auto reachability = KVRReachability::reachabilityWithHostName(name);
        ASSERT_NE(reachability, nullptr) << name;
        EXPECT_EQ(reachability->currentReachabilityStatus(), ReachableViaWiFi) << name;
        EXPECT_FALSE(reachability->connectionRequired()) << name;
    }
    sockaddr_in loopback{};
    loopback.sin_family = AF_INET;
    loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto byAddress = KVRReachability::reachabilityWithAddress(reinterpret_cast<const sockaddr*>(&loopback));
    ASSERT_NE(byAddress, nullptr);
    EXPECT_EQ(byAddress->currentReachabilityStatus(), ReachableViaWiFi);

    EXPECT_EQ(KVRReachability::reachabilityWithHostName("  "), nullptr);
    EXPECT_EQ(KVRReachability::reachabilityWithAddress(nullptr), nullptr);
    sockaddr_un local{};
    local.sun_family = AF_UNIX;
    EXPECT_EQ(KVRReachability::reachabilityWithAddress(reinterpret_cast<const sockaddr*>(&local)), nullptr);
}

TEST(KVRRouteProbe, HostWithoutPort) {
    const std::pair<std::string, std::string> table[] = {
        {"auth.example.com:8443", "auth.example.com"}, {"127.0.0.1:443", "127.0.0.1"}, {"[::1]:443", "::1"},
        {"fe80::1:2", "fe80::1:2"},                    {"host:notaport", "host:notaport"},
    };
    for (const auto& [input, host] : table) EXPECT_EQ(KVRRouteProbe::hostWithoutPort(input), host) << input;
}

}  // namespace
