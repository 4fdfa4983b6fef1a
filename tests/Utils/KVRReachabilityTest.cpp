#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRNotificationCenter.h>

#include "Utils/KVRReachability.h"
#include "Utils/KVRRouteProbe.h"
#include "testing/KVRLogCapture.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTestFixture.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/un.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <ostream>

namespace {

using R = KVRReachability;
constexpr uint32_t Reach = R::kFlagReachable;
constexpr uint32_t Required = R::kFlagConnectionRequired;
constexpr uint32_t OnTraffic = R::kFlagConnectionOnTraffic;
constexpr uint32_t OnDemand = R::kFlagConnectionOnDemand;
constexpr uint32_t Intervention = R::kFlagInterventionRequired;
constexpr uint32_t Direct = R::kFlagIsDirect;
constexpr uint32_t WWAN = R::kFlagIsWWAN;

class KVRReachabilityTest : public KVRTestFixture {};

TEST_F(KVRReachabilityTest, NetworkStatusForFlags) {
    struct Row {
        uint32_t flags;
        KVRNetworkStatus status;
    };
    const std::vector<Row> table = {
        {0, NotReachable},
        {Reach, ReachableViaWiFi},
        {Reach | Direct, ReachableViaWiFi},
        {Reach | Intervention, ReachableViaWiFi},
        {Reach | Required, NotReachable},
        {Reach | Required | OnTraffic, ReachableViaWiFi},
        {Reach | Required | OnDemand, ReachableViaWiFi},
        {Reach | Required | OnTraffic | Intervention, NotReachable},
        {Reach | Required | OnDemand | Intervention, NotReachable},
        {Reach | WWAN, ReachableViaWWAN},
        {Reach | Required | WWAN, ReachableViaWWAN},  // WWAN overrides
        {Reach | Required | Intervention | OnDemand | WWAN, ReachableViaWWAN},
        {WWAN, NotReachable},  // but only when reachable
        {Required | OnTraffic | Direct, NotReachable},
    };
    for (const auto& row : table) {
        EXPECT_EQ(KVRReachability::networkStatusForFlags(row.flags), row.status) << "flags 0x" << std::hex << row.flags;
    }
}

TEST_F(KVRReachabilityTest, LocalWiFiStatusNeedsReachableAndDirect) {
    EXPECT_EQ(KVRReachability::localWiFiStatusForFlags(Reach | Direct), ReachableViaWiFi);
    EXPECT_EQ(KVRReachability::localWiFiStatusForFlags(Reach | Direct | WWAN | Required), ReachableViaWiFi);
    EXPECT_EQ(KVRReachability::localWiFiStatusForFlags(Reach), NotReachable);
    EXPECT_EQ(KVRReachability::localWiFiStatusForFlags(Direct), NotReachable);
    EXPECT_EQ(KVRReachability::localWiFiStatusForFlags(0), NotReachable);
}

TEST_F(KVRReachabilityTest, FlagsAreLoggedOnlyWithTheDebugLog) {
    KVRLogCapture log;
    KVRReachability::networkStatusForFlags(Reach | Required | WWAN | Direct);
    EXPECT_TRUE(log.lines().empty());
    KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    KVRReachability::networkStatusForFlags(Reach | Required | WWAN | Direct);
    KVRReachability::localWiFiStatusForFlags(Reach | R::kFlagIsLocalAddress | R::kFlagTransientConnection | OnTraffic |
                                             OnDemand | Intervention);
    KVRApplicationInfo::removeValue("Kovra Debugginho Developer");
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "Reachability Flag Status: WR -c----d networkStatusForFlags\n",
                               "Reachability Flag Status: -R t-CiDl- localWiFiStatusForFlags\n"}));
}

TEST_F(KVRReachabilityTest, TheOverrideDecidesForEveryKindOfInstance) {
    auto host = KVRReachability::reachabilityWithHostName("127.0.0.1");
    auto internet = KVRReachability::reachabilityForInternetConnection();
    auto wifi = KVRReachability::reachabilityForLocalWiFi();

    KVRTestFixture::setNetworkFlags(0);
    EXPECT_EQ(host->currentReachabilityStatus(), NotReachable);
    EXPECT_EQ(internet->currentReachabilityStatus(), NotReachable);
    EXPECT_EQ(wifi->currentReachabilityStatus(), NotReachable);

    KVRTestFixture::setNetworkFlags(Reach | WWAN);
    EXPECT_EQ(host->currentReachabilityStatus(), ReachableViaWWAN);
    EXPECT_EQ(wifi->currentReachabilityStatus(), NotReachable);  // the local probe needs a direct link

    KVRTestFixture::setNetworkFlags(Reach | Required | Direct);
    EXPECT_TRUE(host->connectionRequired());
    EXPECT_EQ(host->currentReachabilityStatus(), NotReachable);
    EXPECT_EQ(wifi->currentReachabilityStatus(), ReachableViaWiFi);

    KVRTestFixture::setNetworkFlags(std::nullopt);
    EXPECT_EQ(host->currentReachabilityStatus(), ReachableViaWiFi);
    EXPECT_FALSE(host->connectionRequired());
}

TEST_F(KVRReachabilityTest, LoopbackIsReachableAndDirectByNameAddressOrHostWithPort) {
    for (const char* name : {"127.0.0.1", "localhost", "127.0.0.1:8443", " localhost "}) {
        auto reachability = KVRReachability::reachabilityWithHostName(name);
        ASSERT_NE(reachability, nullptr) << name;
        auto flags = reachability->reachabilityFlags();
        ASSERT_TRUE(flags.has_value()) << name;
        EXPECT_EQ(*flags & (Reach | Direct | WWAN | Required), Reach | Direct) << name;
        EXPECT_EQ(reachability->currentReachabilityStatus(), ReachableViaWiFi) << name;
    }
    sockaddr_in loopback{};
    loopback.sin_family = AF_INET;
    loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto byAddress = KVRReachability::reachabilityWithAddress(reinterpret_cast<const sockaddr*>(&loopback));
    ASSERT_NE(byAddress, nullptr);
    EXPECT_EQ(byAddress->currentReachabilityStatus(), ReachableViaWiFi);
    EXPECT_FALSE(byAddress->connectionRequired());
}

TEST_F(KVRReachabilityTest, ConstructorsRefuseWhatCannotBeProbed) {
    EXPECT_EQ(KVRReachability::reachabilityWithHostName(""), nullptr);
    EXPECT_EQ(KVRReachability::reachabilityWithHostName("  "), nullptr);
    EXPECT_EQ(KVRReachability::reachabilityWithAddress(nullptr), nullptr);
    sockaddr_un local{};
    local.sun_family = AF_UNIX;
    EXPECT_EQ(KVRReachability::reachabilityWithAddress(reinterpret_cast<const sockaddr*>(&local)), nullptr);
}

TEST_F(KVRReachabilityTest, HostWithoutPort) {
    const std::vector<std::pair<std::string, std::string>> table = {
        {"auth.example.com", "auth.example.com"}, {"auth.example.com:8443", "auth.example.com"},
        {"127.0.0.1:443", "127.0.0.1"},           {"[::1]:443", "::1"},
        {"::1", "::1"},                           {"fe80::1:2", "fe80::1:2"},
        {"host:notaport", "host:notaport"},
    };
    for (const auto& [input, host] : table) EXPECT_EQ(KVRRouteProbe::hostWithoutPort(input), host) << input;
}

TEST_F(KVRReachabilityTest, InterfaceKinds) {
    KVRTempDirectory sys;
    auto make = [&](const std::string& path, const std::string& content = "") {
        std::filesystem::create_directories(std::filesystem::path(sys.file(path)).parent_path());
        std::ofstream(sys.file(path)) << content;
    };
    make("wlan0/wireless/.keep");
    make("wlp2s0/phy80211");
    make("usb0/uevent", "DEVTYPE=wwan\nINTERFACE=usb0\n");
    make("eth0/uevent", "INTERFACE=eth0\n");
    make("enp3s0/uevent", "DEVTYPE=gadget\n");
    const std::vector<std::pair<std::string, KVRInterfaceKind>> table = {
        {"wlan0", KVRInterfaceKind::Wireless}, {"wlp2s0", KVRInterfaceKind::Wireless},
        {"usb0", KVRInterfaceKind::Cellular},  {"wwan0", KVRInterfaceKind::Cellular},
        {"rmnet_data0", KVRInterfaceKind::Cellular}, {"eth0", KVRInterfaceKind::Wired},
        {"enp3s0", KVRInterfaceKind::Wired},   {"missing0", KVRInterfaceKind::Wired},
    };
    for (const auto& [name, kind] : table) {
        EXPECT_EQ(KVRRouteProbe::interfaceKind(name, IFF_UP, sys.path()), kind) << name;
    }
    EXPECT_EQ(KVRRouteProbe::interfaceKind("lo", IFF_UP | IFF_LOOPBACK, sys.path()), KVRInterfaceKind::Loopback);
}

// Collects the reachability change notifications posted to the default centre.
class ChangeRecorder {
public:
    ChangeRecorder() {
        token_ = KVRNotificationCenter::defaultCenter().addObserver(
            KVRReachability::kNetworkReachabilityChangedNotification, [this](const KVRNotification& note) {
                std::lock_guard lock(mutex_);
                objects_.push_back(std::any_cast<std::shared_ptr<KVRReachability>>(note.object));
                changed_.notify_all();
            });
    }
    ~ChangeRecorder() { KVRNotificationCenter::defaultCenter().removeObserver(token_); }

    /// Waits until `count` notifications arrived (or a generous limit passed).
    std::vector<std::shared_ptr<KVRReachability>> waitFor(size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(10), [&] { return objects_.size() >= count; });
        return objects_;
    }

private:
    KVRNotificationCenter::Token token_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::shared_ptr<KVRReachability>> objects_;
};

TEST_F(KVRReachabilityTest, TheNotifierPostsTheInstanceWhenItsFlagsChange) {
    ChangeRecorder recorder;
    KVRTestFixture::setNetworkFlags(Reach);
    auto reachability = KVRReachability::reachabilityWithHostName("127.0.0.1");
    ASSERT_TRUE(reachability->startNotifier());

    KVRTestFixture::setNetworkFlags(0);
    auto posted = recorder.waitFor(1);
    ASSERT_EQ(posted.size(), 1u);
    EXPECT_EQ(posted.front(), reachability);
    EXPECT_EQ(posted.front()->currentReachabilityStatus(), NotReachable);

    KVRTestFixture::setNetworkFlags(Reach | WWAN);
    EXPECT_EQ(recorder.waitFor(2).size(), 2u);
    reachability->stopNotifier();
    reachability.reset();
}

TEST_F(KVRReachabilityTest, AnObserverMayStopTheNotifierAndDropTheLastReference) {
    auto reachability = KVRReachability::reachabilityWithHostName("localhost");
    std::mutex mutex;
    std::condition_variable stopped;
    bool done = false;
    auto token = KVRNotificationCenter::defaultCenter().addObserver(
        KVRReachability::kNetworkReachabilityChangedNotification, [&](const KVRNotification&) {
            std::shared_ptr<KVRReachability> last;
            {
                std::lock_guard lock(mutex);
                if (!reachability) return;
                reachability->stopNotifier();
                last = std::move(reachability);
            }
            last.reset();
            std::lock_guard lock(mutex);
            done = true;
            stopped.notify_all();
        });
    ASSERT_TRUE(reachability->startNotifier());
    KVRTestFixture::setNetworkFlags(0);
    {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(stopped.wait_for(lock, std::chrono::seconds(10), [&] { return done; }));
    }
    KVRNotificationCenter::defaultCenter().removeObserver(token);
}

}  // namespace
