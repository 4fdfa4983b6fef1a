#include <gtest/gtest.h>

#include <kovra/KVRNotificationCenter.h>

#include "Utils/KVRReachability.h"
#include "Utils/KVRRouteProbe.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTestFixture.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/un.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <ostream>

namespace {

using R = KVRReachability;

class KVRReachabilityTest : public KVRTestFixture {};

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

TEST(KVRRouteProbe, InterfaceKinds) {
    KVRTempDirectory sys;
    auto make = [&](const std::string& path, const std::string& content = "") {
        std::filesystem::create_directories(std::filesystem::path(sys.file(path)).parent_path());
        std::ofstream(sys.file(path)) << content;
    };
    make("wlan0/wireless/.keep");
    make("wlp2s0/phy80211");
    make("usb0/uevent", "DEVTYPE=wwan\nINTERFACE=usb0\n");
    make("enp3s0/uevent", "DEVTYPE=gadget\n");
    const std::pair<const char*, KVRInterfaceKind> table[] = {
        {"wlan0", KVRInterfaceKind::Wireless}, {"wlp2s0", KVRInterfaceKind::Wireless},
        {"usb0", KVRInterfaceKind::Cellular},  {"wwan0", KVRInterfaceKind::Cellular},
        {"rmnet_data0", KVRInterfaceKind::Cellular}, {"enp3s0", KVRInterfaceKind::Wired},
        {"missing0", KVRInterfaceKind::Wired},
    };
    for (const auto& [name, kind] : table) {
        EXPECT_EQ(KVRRouteProbe::interfaceKind(name, IFF_UP, sys.path()), kind) << name;
    }
    EXPECT_EQ(KVRRouteProbe::interfaceKind("lo", IFF_UP | IFF_LOOPBACK, sys.path()), KVRInterfaceKind::Loopback);
}

// The notifier posts the instance whose flags changed; an observer may stop
// it and drop the last reference from inside the notification.
TEST_F(KVRReachabilityTest, TheNotifierPostsTheInstanceWhenItsFlagsChange) {
    KVRTestFixture::setNetworkFlags(R::kFlagReachable);
    auto reachability = KVRReachability::reachabilityWithHostName("127.0.0.1");
    std::promise<KVRNetworkStatus> posted;
    auto token = KVRNotificationCenter::defaultCenter().addObserver(
        KVRReachability::kNetworkReachabilityChangedNotification, [&](const KVRNotification& note) {
            auto instance = std::any_cast<std::shared_ptr<KVRReachability>>(note.object);
            if (instance != reachability) return;
            instance->stopNotifier();
            reachability.reset();
            posted.set_value(instance->currentReachabilityStatus());
        });
    ASSERT_TRUE(reachability->startNotifier());
    KVRTestFixture::setNetworkFlags(0);
    auto status = posted.get_future();
    ASSERT_EQ(status.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(status.get(), NotReachable);
    KVRNotificationCenter::defaultCenter().removeObserver(token);
}

}  // namespace
