#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRTransactionProvider.h>

#include "Host/KVRCommunicationController.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "Platform/KVRAccessoryManager.h"
#include "support/KVRCompletionRecorder.h"
#include "support/KVREmulators.h"
#include "support/KVRTemporaryStore.h"

#include <algorithm>

// Sales end to end: the public providers against the PIN pad emulator on a
// pseudo-terminal and the acquirer emulator on loopback HTTPS.

namespace {

using namespace std::chrono_literals;

const std::string kApprovedDisplay = "TRANSACAO       |APROVADA        ";

size_t countOf(const std::vector<std::string>& items, const std::string& item) {
    return static_cast<size_t>(std::count(items.begin(), items.end(), item));
}

bool contains(const std::vector<std::string>& items, const std::string& item) { return countOf(items, item) > 0; }

class SaleIntegrationTest : public ::testing::Test {
protected:
    void SetUp() override {
#if !defined(KOVRA_PINPAD_SIM_BINARY) || !defined(KOVRA_ACQUIRER_SIM_BINARY)
        GTEST_SKIP() << "the emulators are not built";
#endif
    }

    void TearDown() override {
        KVRBluetoothConnection::resetSharedController();
        KVRPinpadController::sharedController().setConnection(nullptr);
        KVRAccessoryManager::sharedAccessoryManager().unregisterAllAccessories();
        KVRCommunicationController::setXmlTimeoutOverride(std::nullopt);
        if (emulators_) EXPECT_TRUE(emulators_->stop()) << emulators_->failure();
        emulators_.reset();
    }

    /// Starts both emulators, connects the PIN pad, enrols the emulator's
    /// first merchant and downloads its tables (the PIN pad has none yet).
    void start(const std::string& card, std::vector<std::string> faults = {},
               std::vector<std::string> acquirerArguments = {}) {
#if defined(KOVRA_PINPAD_SIM_BINARY) && defined(KOVRA_ACQUIRER_SIM_BINARY)
        KVREmulators::Options options;
        options.pinpadBinary = KOVRA_PINPAD_SIM_BINARY;
        options.acquirerBinary = KOVRA_ACQUIRER_SIM_BINARY;
        options.card = card;
        options.pinpadFaults = std::move(faults);
        options.acquirerArguments = std::move(acquirerArguments);
        emulators_ = std::make_unique<KVREmulators>(options);
        ASSERT_TRUE(emulators_->ready()) << emulators_->failure();
        // A PIN pad that stops answering fails the sale instead of the run.
        KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 20.0);
        KVRApplicationInfo::setValue("CFBundleVersion", std::string("1.4.2"));

        KVRCompletionRecorder connected;
        KVRPinPadConnectionProvider::connectToPinpad(connected.block());
        ASSERT_TRUE(connected.waitForCalls(1, 20s) && connected.calls()[0].success) << "no PIN pad";
        ASSERT_TRUE(completed([](KVRCompletion b) { KVRKovraCodeActivationProvider::activateKovraCode("KOVRA-0001", b); })
                        .success);
        ASSERT_TRUE(completed(KVRTableDownloaderProvider::downLoadTables).success);
#endif
    }

    static KVRCompletionRecorder::Call completed(const std::function<void(KVRCompletion)>& operation) {
        auto recorder = std::make_shared<KVRCompletionRecorder>();
        KVRCompletion block = recorder->block();
        operation([recorder, block](bool success, std::optional<KVRError> error) { block(success, std::move(error)); });
        EXPECT_TRUE(recorder->waitForCalls(1, 90s)) << "no completion";
        return recorder->calls().empty() ? KVRCompletionRecorder::Call{false, KVRErrors::genericError(), {}}
                                         : recorder->calls().front();
    }

    static KVRCompletionRecorder::Call sell(long long amount, unsigned type = 0, unsigned instalments = 0) {
        return completed([=](KVRCompletion block) {
            KVRTransactionProvider().sendTransactionWithValue(amount, type, instalments, "pedido-1", std::move(block));
        });
    }

    /// The stored sales as a new process would find them.
    std::vector<std::shared_ptr<KVRTransactionModel>> storedSales() {
        store_.reopen();
        return KVRTransactionModel::findAll();
    }

    KVRTemporaryStore store_;
    std::unique_ptr<KVREmulators> emulators_;
};

TEST_F(SaleIntegrationTest, ChipVisaApprovedThenCancelledAndBothReceiptsMailed) {
    start("chip-visa");
    auto call = sell(1000);
    ASSERT_TRUE(call.success) << (call.error ? call.error->description() : "");
    EXPECT_TRUE(contains(emulators_->displayLog(), kApprovedDisplay));

    auto sales = storedSales();
    ASSERT_EQ(sales.size(), 1u);
    auto sale = sales.front();
    EXPECT_EQ(sale->status(), 2);
    EXPECT_EQ(sale->cardBrand(), "Visa");
    EXPECT_EQ(sale->aid(), "A0000000031010") << "the tables' AID for the card's record 3";
    // The acquirer echoes the card's cryptogram (9F26) in its chip data.
    ASSERT_TRUE(sale->arqc());
    EXPECT_EQ(sale->arqc()->size(), 16u);
    EXPECT_TRUE(sale->authorisationCode() && !sale->authorisationCode()->empty());
    EXPECT_TRUE(sale->receiptTransactionKey() && !sale->receiptTransactionKey()->empty());
    EXPECT_TRUE(sale->reference() && sale->reference()->size() == 32);
    EXPECT_EQ(sale->pan(), "0010");
    ASSERT_TRUE(sale->initiatorTransactionKey());
    EXPECT_NE(sale->initiatorTransactionKey()->find("142"), std::string::npos) << *sale->initiatorTransactionKey();
    ASSERT_TRUE(sale->merchant());
    EXPECT_EQ(sale->merchant()->kovracode(), "KOVRA-0001");
    ASSERT_TRUE(sale->pinpad());
    EXPECT_TRUE(sale->pinpad()->serialNumber());

    auto cancelled = completed([sale](KVRCompletion b) { KVRCancellationProvider::cancelTransaction(sale, b); });
    ASSERT_TRUE(cancelled.success) << (cancelled.error ? cancelled.error->description() : "");
    EXPECT_EQ(sale->status(), 5);

    for (int kind : {KVRMailProvider::kReceiptSale, KVRMailProvider::kReceiptCancellation}) {
        auto mailed = completed([sale, kind](KVRCompletion b) {
            KVRMailProvider::sendReceiptViaEmail(kind, sale, "cliente@example.com", true, b);
        });
        EXPECT_TRUE(mailed.success) << kind << (mailed.error ? mailed.error->description() : "");
    }
    auto outbox = emulators_->outbox();
    ASSERT_EQ(outbox.size(), 2u);
    nlohmann::json parameters = {
        {"card_brand", "Visa - Crédito 0"},
        {"company_name", "Padaria Pão Quente Ltda"},
        {"company_address", "Rua Augusta, 1500, Loja 2, Consolação, SP, São Paulo, 01304-001"},
        {"company_tax_document_number", "12.345.678/0001-95"},
        {"transaction_aid", "A0000000031010"},
        {"transaction_arqc", *sale->arqc()},
        {"transaction_kovra_id", *sale->authorisationCode()},
        {"client_name", *sale->cardHolderName()},
        {"client_masked_card_number", "**** **** **** 0010"},
        {"transaction_date", sale->dateString().substr(0, 10)},
        {"transaction_time", sale->dateString().substr(13, 5)},
        {"transaction_amount", "1000,00"},
        {"display_aid_arqc", "true"},
        {"display_company_information", "true"},
    };
    EXPECT_EQ(outbox[0], (nlohmann::json{{"template", "transaction"},
                                         {"mail_header", {{"subject", "Comprovante de transação"}, {"to", "cliente@example.com"}}},
                                         {"body_parameters", parameters}}));
    EXPECT_EQ(outbox[1], (nlohmann::json{{"template", "void_transaction"},
                                         {"mail_header", {{"subject", "Comprovante de cancelamento"}, {"to", "cliente@example.com"}}},
                                         {"body_parameters", parameters}}));
}

TEST_F(SaleIntegrationTest, TablesMissingAtTheFirstSaleAreLoadedAndTheSaleStartsAgain) {
    // The card read's own retry meets a second table error on the other
    // application type, which sends the sale back to the start.
    // (The emulator does not count the card reads it answers for missing tables.)
    start("chip-visa", {R"({"command": "GCR", "nth": 1, "status": 5})", R"({"command": "GCR", "nth": 2, "status": 20})"});
    auto call = sell(2000);
    ASSERT_TRUE(call.success) << (call.error ? call.error->description() : "");
    auto names = emulators_->commandNames();
    EXPECT_EQ(countOf(names, "GIN"), 2u);
    EXPECT_EQ(countOf(names, "TLI"), 2u);
    EXPECT_EQ(countOf(names, "TLE"), 2u);
    EXPECT_TRUE(contains(emulators_->displayLog(), "TABELA          |ATUALIZADA      "));
    EXPECT_TRUE(contains(emulators_->displayLog(), kApprovedDisplay));
    auto sales = storedSales();
    ASSERT_EQ(sales.size(), 1u);
    EXPECT_EQ(sales[0]->status(), 2);
    EXPECT_EQ(KVRPinpadModel::findAll().size(), 1u);
}

TEST_F(SaleIntegrationTest, AmountRulesDeclineAndPartlyApproveMastercard) {
    start("chip-master");
    struct Row {
        long long amount;
        int status;
    } rows[] = {{1051, 1}, {1052, 3}};
    for (const auto& row : rows) {
        auto call = sell(row.amount);
        EXPECT_FALSE(call.success);
        EXPECT_EQ(call.error, KVRErrors::transactionRejected()) << row.amount;
    }
    auto sales = storedSales();
    ASSERT_EQ(sales.size(), 2u) << "declined and partly approved sales are kept";
    for (size_t i = 0; i < sales.size(); ++i) {
        EXPECT_EQ(sales[i]->status(), rows[i].status);
        EXPECT_EQ(sales[i]->cardBrand(), "MasterCard");
        EXPECT_EQ(sales[i]->aid(), "A0000000041010");
    }
}

TEST_F(SaleIntegrationTest, HostFailuresLeaveNoRecord) {
    start("stripe", {}, {"--auth-delay", "3"});
    KVRCommunicationController::setXmlTimeoutOverride(std::chrono::milliseconds(800));
    auto late = sell(1054);
    EXPECT_EQ(late.error, KVRErrors::transactionTimeout()) << "a stripe sale tells a time-out apart";
    EXPECT_TRUE(contains(emulators_->displayLog(), "TEMPO           |EXPIROU         "));
    auto page = sell(1055);
    EXPECT_EQ(page.error, KVRErrors::transactionFailed());
    EXPECT_TRUE(contains(emulators_->displayLog(), "TRANSACAO       |FALHOU          "));
    EXPECT_TRUE(storedSales().empty());
}

TEST_F(SaleIntegrationTest, CardholderCancelsTheCardRead) {
    start("chip-visa", {R"({"command": "GCR", "status": 13})"});
    auto call = sell(1000);
    EXPECT_EQ(call.error, KVRErrors::operationCancelledByUser());
    EXPECT_FALSE(contains(emulators_->commandNames(), "GOC"));
    EXPECT_TRUE(emulators_->acquirerLog().size() >= 2u);  // enrolment and tables only
    for (const auto& line : emulators_->acquirerLog()) EXPECT_EQ(line.find("/Authorize"), std::string::npos) << line;
    EXPECT_TRUE(storedSales().empty());
}

TEST_F(SaleIntegrationTest, AStripeCardThatAsksForAPinIsApproved) {
    start("stripe-pin");
    auto withPin = sell(3000, 1);
    ASSERT_TRUE(withPin.success) << (withPin.error ? withPin.error->description() : "");
    EXPECT_TRUE(contains(emulators_->commandNames(), "GPN"));
    EXPECT_FALSE(contains(emulators_->commandNames(), "FNC"));
    EXPECT_TRUE(contains(emulators_->displayLog(), kApprovedDisplay));
    auto sales = storedSales();
    ASSERT_EQ(sales.size(), 1u);
    EXPECT_EQ(sales[0]->cardBrand(), "MasterCard");
    EXPECT_EQ(sales[0]->pan(), "4444");
    EXPECT_EQ(sales[0]->type(), 1);
    EXPECT_EQ(sales[0]->arqc(), std::nullopt) << "no chip data on a stripe";
}

TEST_F(SaleIntegrationTest, AChipCardSwipedIsRefused) {
    start("stripe-chip");
    auto call = sell(1000);
    EXPECT_EQ(call.error, KVRErrors::invalidTransaction());
    EXPECT_TRUE(contains(emulators_->displayLog(), "Cartao de Chip  |                "));
    EXPECT_FALSE(contains(emulators_->commandNames(), "GPN"));
    EXPECT_TRUE(storedSales().empty());
}

TEST_F(SaleIntegrationTest, APinpadLostDuringTheSaleEndsIt) {
    // Unplugged while the chip is processed: nothing went to the acquirer.
    start("chip-visa", {R"({"command": "GOC", "hangup": "instead"})"});
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 1.0);
    auto lost = sell(1000);
    EXPECT_EQ(lost.error, KVRErrors::transactionTimeout());
    for (const auto& line : emulators_->acquirerLog()) EXPECT_EQ(line.find("/Authorize"), std::string::npos) << line;
    EXPECT_TRUE(storedSales().empty());
}

TEST_F(SaleIntegrationTest, APinpadSilentAfterTheApprovalHasTheSaleCancelledAtTheAcquirer) {
    start("chip-visa", {R"({"command": "FNC", "silence": true})"});
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 1.0);
    auto call = sell(1000);
    EXPECT_EQ(call.error, KVRErrors::transactionAutoCancel());
    auto log = emulators_->acquirerLog();
    EXPECT_TRUE(std::any_of(log.begin(), log.end(),
                            [](const std::string& line) { return line.find("/CancellationAdvice 200 cancel APPR") != std::string::npos; }));
    auto sales = storedSales();
    ASSERT_EQ(sales.size(), 1u) << "the approved sale is kept, as cancelled";
    EXPECT_EQ(sales[0]->status(), 5);
}

}  // namespace
