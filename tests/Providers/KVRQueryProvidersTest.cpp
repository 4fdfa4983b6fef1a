#include <gtest/gtest.h>

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionListProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRUserInfoProvider.h>
#include <kovra/KVRValidationProvider.h>

#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "Platform/KVRPropertyList.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRReachability.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRPinpadReplies.h"
#include "testing/KVRScriptedPinpad.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRWaitUntil.h"
#include "testing/KVRTestFixture.h"

#include <future>
#include <filesystem>
#include <fstream>

namespace {

std::shared_ptr<KVRTransactionModel> sale(const std::string& reference, const std::string& pan, const char* date) {
    auto transaction = KVRTransactionModel::create();
    transaction->setReference(reference);
    transaction->setPan(pan);
    if (date) transaction->setDate(KVRDateUtil::buildDateWithString(date, "dd/MM/yyyy HH:mm"));
    transaction->save();
    return transaction;
}

std::vector<std::string> references(const KVRTransactionListProvider::Transactions& transactions) {
    std::vector<std::string> out;
    for (const auto& t : transactions) out.push_back(t->reference().value_or("?"));
    return out;
}

struct Listed {
    bool success = false;
    KVRTransactionListProvider::Transactions transactions;
    std::optional<KVRError> error;
};

Listed listByPan() {
    std::promise<Listed> promise;
    KVRTransactionListProvider::listTransactionsByPan([&promise](bool success, auto transactions, auto error) {
        promise.set_value({success, std::move(transactions), std::move(error)});
    });
    auto future = promise.get_future();
    EXPECT_EQ(future.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    return future.get();
}

class QueryProvidersTest : public KVRTestFixture {
protected:
    std::string registerPlist() const { return KVRDirectories::documentsDirectory() + "/register.plist"; }

    KVRTemporaryStore store_;
};

TEST_F(QueryProvidersTest, TransactionsAreListedNewestFirstAndUndatedLast) {
    EXPECT_TRUE(KVRTransactionListProvider::listTransactions().empty());

    sale("MIDDLE", "0119", "05/03/2024 14:07");
    sale("UNDATED", "0119", nullptr);
    sale("NEWEST", "0027", "05/03/2024 14:08");
    sale("OLDEST", "0119", "31/12/2023 23:59");
    EXPECT_EQ(references(KVRTransactionListProvider::listTransactions()),
              (std::vector<std::string>{"NEWEST", "MIDDLE", "OLDEST", "UNDATED"}));
}

TEST_F(QueryProvidersTest, TransactionsOfTheCardOnThePinpad) {
    KVRScriptedPinpad pinpad([](const std::string&) {
        return std::vector<std::string>{KVRPinpadReplies::gcrReply(0, "5555666677778888=2812101", "5555666677778888")};
    });
    ASSERT_TRUE(pinpad.connectSharedLink());
    KVRPinpadController::sharedController().setConnection(KVRBluetoothConnection::sharedController());
    sale("OLDER", "8888", "05/03/2024 14:07");
    sale("OTHER CARD", "1111", "05/03/2024 14:09");
    sale("NEWER", "8888", "06/03/2024 08:00");
    auto listed = listByPan();
    EXPECT_TRUE(listed.success);
    EXPECT_EQ(references(listed.transactions), (std::vector<std::string>{"NEWER", "OLDER"}));

    pinpad.setHandler([](const std::string& request) {
        return std::vector<std::string>{KVRPinpadReplies::statusReply(request, 13)};
    });
    listed = listByPan();
    EXPECT_FALSE(listed.success);
    EXPECT_TRUE(listed.transactions.empty());
    EXPECT_EQ(listed.error, KVRErrors::genericError()) << "the card reader's own failure is passed on";
}

TEST_F(QueryProvidersTest, UserViewOfTheStoredMerchant) {
    auto address = KVRAddressModel::create();
    address->setStreet(std::string("Avenida Paulista"));
    address->setDoorNumber(std::string("1578"));
    address->setNeighborhood(std::string("Bela Vista"));
    address->setCity(std::string("São Paulo"));
    auto merchant = KVRMerchantModel::create();
    merchant->setKovracode(std::string("KOVRA-1"));
    merchant->setSaleAffiliationKey(std::string("SAK-1"));
    merchant->setMerchantName(std::string("Padaria"));
    merchant->setDocumentNumber(std::string("12.345.678/0001-90"));
    merchant->setAddress(address);
    merchant->save();
    KVRPropertyList::writeDictionary(registerPlist(), {{"kovracode", std::string("FROM-FILE")}});

    KVRUserInfoProvider user;
    EXPECT_EQ(user.afKey, "SAK-1");
    EXPECT_EQ(user.store, "Padaria");
    EXPECT_EQ(user.documentNumber, "12.345.678/0001-90");
    EXPECT_EQ(user.address, "Avenida Paulista 1578, Bela Vista, São Paulo");
    EXPECT_EQ(user.kovracode, "KOVRA-1") << "the stored merchant wins over the file";
}

TEST_F(QueryProvidersTest, UserViewOfRegisterPlistReEnrolsItsMerchant) {
    KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
    KVRFakeExchange host;
    host.replyWith("<AccptrCfgtnUpd><AccptrCfgtn><DataSet><Cntt><MrchntParams><Sak>SAK-9</Sak></MrchntParams>"
                   "</Cntt></DataSet></AccptrCfgtn></AccptrCfgtnUpd>");
    KVRPropertyList::writeDictionary(registerPlist(), {{"AfKey", std::string("AF-OLD")},
                                                      {"estabelecimento", std::string("Loja Antiga")},
                                                      {"CNPJ", std::string("98.765.432/0001-10")},
                                                      {"Endereço", std::string("Rua Augusta 10, Consolação, SP")},
                                                      {"kovracode", std::string("KOVRA-OLD")}});

    KVRUserInfoProvider user;
    EXPECT_EQ(user.afKey, "AF-OLD");
    EXPECT_EQ(user.store, "Loja Antiga");
    EXPECT_EQ(user.documentNumber, "98.765.432/0001-10");
    EXPECT_EQ(user.address, "Rua Augusta 10, Consolação, SP");
    EXPECT_EQ(user.kovracode, "KOVRA-OLD");

    // The enrolment completes on the pool with nobody listening; it is done
    // when the merchant is saved.
    std::shared_ptr<KVRMerchantModel> merchant;
    ASSERT_TRUE(kvrWaitUntil([&] {
        merchant = KVRMerchantModel::findFirstByAttribute("kovracode", "KOVRA-OLD");
        return merchant && !merchant->hasChanges();
    }));
    EXPECT_EQ(merchant->saleAffiliationKey(), "SAK-9");
    EXPECT_EQ(host.count(), 1u);
}

TEST_F(QueryProvidersTest, UnusableRegisterPlistGivesAnEmptyViewNoEnrolmentAndNoActivation) {
    KVRTestFixture::setNetworkFlags(KVRReachability::kFlagReachable);
    KVRFakeExchange host;
    struct Row {
        const char* name;
        std::function<void(const std::string&)> make;
    } rows[] = {
        {"missing", [](const std::string&) {}},
        {"not a property list", [](const std::string& p) { std::ofstream(p) << "kovracode=KOVRA-1\n"; }},
        {"a directory", [](const std::string& p) { std::filesystem::create_directory(p); }},
        {"non-string values", [](const std::string& p) {
             KVRPropertyList::writeDictionary(p, {{"kovracode", 12345LL}, {"AfKey", true}, {"CNPJ", 1.5}});
         }},
        {"empty code", [](const std::string& p) {
             KVRPropertyList::writeDictionary(p, {{"kovracode", std::string("")}});
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove_all(registerPlist());
        row.make(registerPlist());
        KVRUserInfoProvider user;
        EXPECT_FALSE(user.afKey || user.documentNumber || user.store || user.address);
        EXPECT_TRUE(!user.kovracode || user.kovracode->empty());
        EXPECT_FALSE(KVRValidationProvider::validateActivation());
    }
    std::filesystem::remove_all(registerPlist());
    EXPECT_EQ(host.count(), 0u);
    EXPECT_TRUE(KVRMerchantModel::findAll().empty());
}

}  // namespace
