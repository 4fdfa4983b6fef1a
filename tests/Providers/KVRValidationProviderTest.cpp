#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRValidationProvider.h>

#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "Platform/KVRPropertyList.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRScriptedPinpad.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"

#include <filesystem>

namespace {

class ValidationProviderTest : public KVRTestFixture {
protected:
    std::string registerPlist() const { return KVRDirectories::documentsDirectory() + "/register.plist"; }
    KVRTemporaryStore store_;
};

// Unusable files are in the user view's table (KVRQueryProvidersTest).
TEST_F(ValidationProviderTest, ActivationByACodeInRegisterPlistOrAStoredMerchantAndTablesByTheirRecord) {
    EXPECT_FALSE(KVRValidationProvider::validateActivation());
    KVRPropertyList::writeDictionary(registerPlist(), {{"kovracode", std::string("KOVRA-0001")}});
    EXPECT_TRUE(KVRValidationProvider::validateActivation()) << "a code in the file counts without a merchant";
    std::filesystem::remove(registerPlist());
    KVRMerchantModel::create()->save();
    EXPECT_TRUE(KVRValidationProvider::validateActivation());

    EXPECT_FALSE(KVRValidationProvider::validateTablesDownloaded());
    KVRTmsTableModel::create()->save();
    EXPECT_TRUE(KVRValidationProvider::validateTablesDownloaded());
}

TEST_F(ValidationProviderTest, NetworkStatusOneOrTwoCountsAsConnected) {
    using R = KVRReachability;
    struct Row {
        uint32_t flags;
        bool connected;
    } rows[] = {
        {0, false},
        {R::kFlagReachable, true},
        {R::kFlagReachable | R::kFlagConnectionRequired, false},
        {R::kFlagReachable | R::kFlagIsWWAN, true},
    };
    for (const auto& row : rows) {
        KVRTestFixture::setNetworkFlags(row.flags);
        EXPECT_EQ(KVRValidationProvider::validateConnectionToNetWork(), row.connected) << row.flags;
    }
    KVRTestFixture::setNetworkFlags(std::nullopt);
    KVRApplicationInfo::setValue("Kovra Reachability Host", std::string("127.0.0.1"));
    EXPECT_TRUE(KVRValidationProvider::validateConnectionToNetWork());
}

TEST_F(ValidationProviderTest, PinpadConnectionUsesTheFirstAccessoryAndItsFirstWorkingProtocol) {
    EXPECT_FALSE(KVRValidationProvider::validatePinpadConnection());
    KVRPinpadController::sharedController().connectWithPaired();
    EXPECT_FALSE(KVRValidationProvider::validatePinpadConnection()) << "no accessory";

    KVRScriptedPinpad first, second;
    auto refusing = std::make_shared<KVRMemoryAccessory>("refusing", std::vector<std::string>{"abecs"});
    refusing->setRefusesSessions(true);
    KVRTestFixture::addAccessory(refusing);
    KVRTestFixture::addAccessory(first.accessory());
    KVRPinpadController::sharedController().connectWithPaired();
    EXPECT_FALSE(KVRValidationProvider::validatePinpadConnection()) << "only the first accessory is tried";

    KVRTestFixture::removeAllAccessories();
    auto multi = std::make_shared<KVRMemoryAccessory>("multi", std::vector<std::string>{"other", "abecs"});
    KVRTestFixture::addAccessory(multi);
    KVRTestFixture::addAccessory(second.accessory());
    KVRPinpadController::sharedController().connectWithPaired();
    EXPECT_TRUE(KVRValidationProvider::validatePinpadConnection());
    EXPECT_EQ(KVRBluetoothConnection::sharedController()->accessory(), multi);
}

}  // namespace
