#pragma once

#include <kovra/KVRPropertyValue.h>

#include "Utils/KVRPlatformHooks.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/// What a test may change in the process: the platform hooks, the application
/// settings, the data directories, the object store, the shared PIN pad link
/// and its controller's connection, the last card's variables and the main
/// executor. Made, it remembers the hooks and settings; destroyed, it puts all
/// of it back as the test main set it up (the store closed, so the next use
/// opens it where the directories point).
class KVRGlobalStateGuard {
public:
    KVRGlobalStateGuard();
    ~KVRGlobalStateGuard();
    KVRGlobalStateGuard(const KVRGlobalStateGuard&) = delete;
    KVRGlobalStateGuard& operator=(const KVRGlobalStateGuard&) = delete;

private:
    std::shared_ptr<const KVRPlatformHooks> hooks_;
    KVRPropertyDictionary settings_;
};

/// The base of every fixture that touches global state: whatever the test
/// changed is restored when it ends, even after a failed assertion. The
/// static members change one platform hook each and keep the others.
class KVRTestFixture : public ::testing::Test {
public:
    static void setClock(std::function<KVRPlatformHooks::TimePoint()> now);
    static void setUuidGenerator(std::function<std::string()> uuid);
    /// The flags every reachability probe reports; nothing restores the machine's.
    static void setNetworkFlags(std::optional<uint32_t> flags);
    /// The real network, with this time-out in place of the XML exchange's.
    static void setXmlTimeout(std::chrono::milliseconds timeout);
    /// Offers the accessory before the machine's PIN pads.
    static void addAccessory(std::shared_ptr<KVRAccessory> accessory);
    static void removeAccessory(const std::shared_ptr<KVRAccessory>& accessory);
    static void removeAllAccessories();

private:
    KVRGlobalStateGuard guard_;
};
