#include <gtest/gtest.h>

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRDirectories.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRHostMessageFixtures.h"
#include "Host/KVRServiceEndpoint.h"
#include "Host/Messages/KVRAcceptorAuthorisationResponse.h"
#include "Host/Messages/KVRAuthorisationRequestFactory.h"
#include "Persistence/KVRDataBaseController.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Platform/KVRPropertyList.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRProcess.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"
#include "testing/KVRWaitUntil.h"

#include <sqlite3.h>

#include <chrono>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;

const std::string kAcquirerReady = "kovra-acquirer-sim ready at https://";
// Merchants of the emulator's built-in merchant file.
const std::string kKnownCode = "KOVRA-0001";
const std::string kSecondCode = "KOVRA-0002";

/// The real acquirer emulator on loopback, driven through the public
/// providers; its request log shows what reached it.
class EnrolmentCancellationIntegrationTest : public KVRTestFixture {
protected:
    void SetUp() override {
#ifndef KOVRA_ACQUIRER_SIM_BINARY
        GTEST_SKIP() << "kovra-acquirer-sim is not built";
#else
        acquirer_ = std::make_unique<KVRProcess>(
            KOVRA_ACQUIRER_SIM_BINARY, std::vector<std::string>{"--port", "0", "--state", state_.path()});
        auto ready = acquirer_->waitForLine(kAcquirerReady, 30s);
        ASSERT_TRUE(ready) << "the acquirer emulator did not start";
        auto ca = acquirer_->waitForLine("ca: ", 10s);
        ASSERT_TRUE(ca);
        std::string host = ready->substr(kAcquirerReady.size());
        KVRApplicationInfo::setValue("Kovra TMS Host", host);
        KVRApplicationInfo::setValue("Kovra Authorizer Host", host);
        KVRApplicationInfo::setValue("Kovra CA File", ca->substr(4));
        KVRApplicationInfo::setValue("Kovra Reachability Host", std::string("127.0.0.1"));
#endif
    }

    void TearDown() override {
        if (!acquirer_) return;
        // The emulator waits for idle keep-alive connections (2 s) before it ends.
        EXPECT_EQ(acquirer_->stop(10s), 0) << "the acquirer emulator did not end cleanly";
    }

    /// The emulator's request log, one line per request.
    std::vector<std::string> requestLog() const {
        std::ifstream in(state_.file("requests.log"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }

    KVRCompletionRecorder::Call enrol(const std::string& code) {
        KVRCompletionRecorder recorder;
        KVRKovraCodeActivationProvider::activateKovraCode(code, recorder.block());
        EXPECT_TRUE(recorder.waitForCalls(1, 60s));
        EXPECT_EQ(recorder.count(), 1u);
        return recorder.calls().at(0);
    }

    KVRCompletionRecorder::Call cancel(const std::shared_ptr<KVRTransactionModel>& sale) {
        KVRCompletionRecorder recorder;
        KVRCancellationProvider::cancelTransaction(sale, recorder.block());
        EXPECT_TRUE(recorder.waitForCalls(1, 60s));
        return recorder.calls().at(0);
    }

    /// A magnetic-stripe sale of the enrolled merchant, approved by the
    /// emulator through a real authorisation exchange, stored as the sale
    /// stores it.
    std::shared_ptr<KVRTransactionModel> approvedSale(long long amount, const std::string& initiatorKey) {
        auto sale = KVRTransactionModel::create();
        sale->setAmount(KVRNumber(amount));
        sale->setInitiatorTransactionKey(initiatorKey);
        sale->setMerchant(KVRMerchantModel::findFirstByAttribute("kovracode", kKnownCode));
        kvrtest::GcrReply card;
        card.cardType = 0;
        card.track2 = "5555555555554444=28121010000000000000";
        KVRGcrCommandResponse gcr(card.text().c_str());
        auto request = KVRAuthorisationRequestFactory::createAcceptorAutorisationrequestWithTrasansaction(
            *sale, gcr, nullptr, nullptr);
        std::optional<KVRError> error;
        auto reply = KVRCommunicationController::postXml(request->write(), KVRServiceEndpoint::authorizerUrl(), &error);
        EXPECT_FALSE(error) << error->description();
        KVRAcceptorAuthorisationResponse response;
        response.read(reply.value_or(""));
        const auto* data = response.data && response.data->authorisationResponse ? &*response.data->authorisationResponse
                                                                                   : nullptr;
        if (!data || !data->transaction || !data->transaction->transactionId) {
            ADD_FAILURE() << "the emulator did not approve the sale: " << reply.value_or("<none>");
            return sale;
        }
        sale->setReceiptTransactionKey(data->transaction->recipientTransactionId);
        sale->setReference(data->transaction->transactionId->transactionReference);
        sale->setStatus(2);
        sale->save();
        return sale;
    }

    KVRTemporaryStore store_;
    KVRTempDirectory state_;
    std::unique_ptr<KVRProcess> acquirer_;
};

TEST_F(EnrolmentCancellationIntegrationTest, EnrolKnownUnknownTwiceThenDeactivateAndEnrolAgain) {
    auto known = enrol(kKnownCode);
    ASSERT_TRUE(known.success) << (known.error ? known.error->description() : "");
    store_.reopen();
    auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", kKnownCode);
    ASSERT_TRUE(merchant);
    EXPECT_EQ(merchant->saleAffiliationKey(), "1234-5678");
    EXPECT_EQ(merchant->merchantName(), "Padaria Pão Quente Ltda");
    EXPECT_EQ(merchant->documentNumber(), "12.345.678/0001-95");
    auto address = merchant->address();
    ASSERT_TRUE(address);
    EXPECT_EQ(address->street(), "Rua Augusta");
    EXPECT_EQ(address->doorNumber(), "1500");
    EXPECT_EQ(address->neighborhood(), "Consolação");
    EXPECT_EQ(address->city(), "São Paulo");
    EXPECT_EQ(address->zipCode(), "01304-001");
    EXPECT_EQ(address->complement(), "Loja 2");

    auto unknown = enrol("KOVRA-9999");
    EXPECT_FALSE(unknown.success);
    EXPECT_EQ(unknown.error, KVRErrors::nullResponse());
    EXPECT_FALSE(KVRMerchantModel::findFirstByAttribute("kovracode", "KOVRA-9999"));
    ASSERT_EQ(requestLog().size(), 2u);

    KVRCompletionRecorder again;
    KVRKovraCodeActivationProvider::activateKovraCode(kKnownCode, again.block());
    ASSERT_EQ(again.count(), 1u);
    EXPECT_EQ(again.calls()[0].error, KVRErrors::kovracodeAlreadyActivated());
    EXPECT_EQ(requestLog().size(), 2u) << "nothing was sent for the second enrolment";

    KVRKovraCodeActivationProvider::deactivateMerchantWithKovraCode(kKnownCode);
    EXPECT_TRUE(KVRMerchantModel::findAll().empty());
    EXPECT_TRUE(enrol(kKnownCode).success);
    EXPECT_TRUE(enrol(kSecondCode).success);
    EXPECT_EQ(KVRMerchantModel::findAll().size(), 2u);
    auto log = requestLog();
    ASSERT_EQ(log.size(), 4u);
    for (const auto& line : log) EXPECT_NE(line.find("POST /Report 200"), std::string::npos) << line;
}

TEST_F(EnrolmentCancellationIntegrationTest, CancelAnApprovedSaleOnceAndOneTheAcquirerDoesNotKnow) {
    ASSERT_TRUE(enrol(kKnownCode).success);
    auto sale = approvedSale(1500, "5123456789-24100007A1B2108");
    ASSERT_EQ(sale->status(), 2);

    auto cancelled = cancel(sale);
    EXPECT_TRUE(cancelled.success) << (cancelled.error ? cancelled.error->description() : "");
    store_.reopen();
    auto stored = KVRTransactionModel::findFirstByAttribute("reference", *sale->reference());
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->status(), 5);
    auto log = requestLog();
    ASSERT_FALSE(log.empty());
    EXPECT_NE(log.back().find("cancel APPR"), std::string::npos) << log.back();

    KVRCompletionRecorder again;
    KVRCancellationProvider::cancelTransaction(stored, again.block());
    ASSERT_EQ(again.count(), 1u);
    EXPECT_EQ(again.calls()[0].error, KVRErrors::transactionAlreadyCancelled());
    EXPECT_EQ(requestLog().size(), log.size()) << "no traffic for an already cancelled sale";

    auto stranger = KVRTransactionModel::create();
    stranger->setAmount(KVRNumber(1500));
    stranger->setInitiatorTransactionKey(std::string("5123456789-24100007A1B2109"));
    stranger->setReceiptTransactionKey(std::string("999999"));
    stranger->setReference(std::string("0123456789ABCDEF0123456789ABCDEF"));
    stranger->setMerchant(KVRMerchantModel::findFirst());
    stranger->setStatus(2);
    stranger->save();
    auto rejected = cancel(stranger);
    EXPECT_FALSE(rejected.success);
    EXPECT_EQ(rejected.error, KVRErrors::transactionRejected());
    store_.reopen();
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("reference", "0123456789ABCDEF0123456789ABCDEF")->status(), 2);
    EXPECT_NE(requestLog().back().find("cancel DECL"), std::string::npos) << requestLog().back();
}

TEST_F(EnrolmentCancellationIntegrationTest, LegacyHistoryArrivesUnderTheMerchantOfRegisterPlist) {
    const std::string documents = KVRDirectories::documentsDirectory();
    KVRPropertyList::writeDictionary(documents + "/register.plist", {{"kovracode", kSecondCode}});
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open((documents + "/trans.db").c_str(), &db), SQLITE_OK);
    std::string sql = std::string(KVRDataBaseController::kCreateStatement) +
                      ";INSERT INTO contacts (amount,date,status,type,instalments,idOrder,Reference,PAN,Mail) VALUES "
                      "('2500','05/03/2024 - 14:07','Transação Aprovada','Crédito','0','ITK-1','REF-A','0119','a@b.c'),"
                      "('990','06/03/2024 - 09:30','Transação Negada','Débito','0','ITK-2','REF-B','0027',NULL),"
                      "('2500','05/03/2024 - 14:07','Transação Aprovada','Crédito','0','ITK-1','REF-A','0119',NULL);";
    ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);

    KVRDataBaseController::getsharedInstance().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);

    // Enrolment and the copy run on the pool; they are done when both rows are saved.
    ASSERT_TRUE(kvrWaitUntil(
        [] {
            auto transactions = KVRTransactionModel::findAll();
            if (transactions.size() != 2) return false;
            for (const auto& t : transactions) {
                if (t->hasChanges()) return false;
            }
            return true;
        },
        60s));
    auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", kSecondCode);
    ASSERT_TRUE(merchant);
    EXPECT_EQ(merchant->saleAffiliationKey(), "8765-4321");
    ASSERT_EQ(KVRTransactionModel::findAll().size(), 2u) << "the duplicate reference is copied once";
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("reference", "REF-A")->status(), 2);
    EXPECT_EQ(KVRTransactionModel::findFirstByAttribute("reference", "REF-B")->status(), 5);
    EXPECT_EQ(merchant->transactions().size(), 2u);

    // A merchant and transactions: nothing to do.
    KVRDataBaseController::getsharedInstance().migrateDatabase(KVRKovraCodeActivationProvider::activateKovraCode);
    EXPECT_EQ(KVRTransactionModel::findAll().size(), 2u);
    EXPECT_EQ(requestLog().size(), 1u);
}

}  // namespace
