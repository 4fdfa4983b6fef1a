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
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVREmulators.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRTestFixture.h"
#include "testing/KVRWaitUntil.h"

#include "Persistence/KVRStoreFileInspector.h"

#include <kovra/KVRJournalProvider.h>

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <set>
#include <thread>

// Sales end to end: the public providers against the PIN pad emulator on a
// pseudo-terminal and the acquirer emulator on loopback HTTPS.

namespace {

using namespace std::chrono_literals;

const std::string kApprovedDisplay = "TRANSACAO       |APROVADA        ";

size_t countOf(const std::vector<std::string>& items, const std::string& item) {
    return static_cast<size_t>(std::count(items.begin(), items.end(), item));
}

bool contains(const std::vector<std::string>& items, const std::string& item) { return countOf(items, item) > 0; }

class SaleIntegrationTest : public KVRTestFixture {
protected:
    void SetUp() override {
#if !defined(KOVRA_PINPAD_SIM_BINARY) || !defined(KOVRA_ACQUIRER_SIM_BINARY)
        GTEST_SKIP() << "the emulators are not built";
#endif
    }

    void TearDown() override {
        // The link lets go of the emulator's terminal before the emulator stops.
        KVRBluetoothConnection::resetSharedController();
        KVRPinpadController::sharedController().setConnection(nullptr);
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
        {"card_brand", "Visa - Crédito à vista"},
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
        {"transaction_amount", "10,00"},
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

// Whatever the acquirer approved, or may have approved, ends either stored as
// approved or undone at the acquirer, and the application hears what it
// always did. Each row is one sale, then an ordinary one: the journal owes
// nothing afterwards and no initiator key repeats.
struct MoneyRow {
    const char* name;
    const char* card;
    std::vector<std::string> faults;
    std::vector<std::string> acquirerArguments;
    long long amount;
    KVRError error;
    std::optional<int> stored;  // the status of the record kept, if one is
    bool undone;                // the acquirer approved it, then cancelled it
    bool diskFillsAfterThePost = false;
};

void PrintTo(const MoneyRow& row, std::ostream* out) { *out << row.name; }

const std::vector<std::string> kLate = {"--auth-delay", "5"};

std::vector<MoneyRow> moneyRows() {
    return {
        {"ChipAnswerAfterTheTimeOut", "chip-visa", {}, kLate, 1054, KVRErrors::transactionFailed(), {}, true},
        {"StripeAnswerAfterTheTimeOut", "stripe", {}, kLate, 1054, KVRErrors::transactionTimeout(), {}, true},
        {"HtmlPage", "stripe", {}, {}, 1055, KVRErrors::transactionFailed(), {}, false},
        {"TruncatedAnswer", "chip-visa", {}, {}, 1058, KVRErrors::transactionFailed(), {}, true},
        {"ApprovalWithoutIdentifiers", "chip-visa", {}, {}, 1056, KVRErrors::transactionFailed(), {}, true},
        {"OddLengthIssuerData", "chip-visa", {}, {}, 1057, KVRErrors::transactionFailed(), {}, true},
        {"Declined", "chip-master", {}, {}, 1051, KVRErrors::transactionRejected(), 1, false},
        {"PartlyApproved", "chip-master", {}, {}, 1052, KVRErrors::transactionRejected(), 3, true},
        {"FncFailsAfterTheApproval", "chip-visa", {R"({"command": "FNC", "nth": 1, "status": 12})"}, {}, 1000,
         KVRErrors::transactionRejected(), 1, true},
        {"PinpadSilentAfterTheApproval", "chip-visa", {R"({"command": "FNC", "nth": 1, "silence": true})"}, {}, 1000,
         KVRErrors::transactionAutoCancel(), 5, true},
        {"DiskFillsWhileTheHostAnswers", "chip-visa", {}, {"--reply-delay", "1"}, 1000, KVRErrors::transactionFailed(),
         {}, true, true},
    };
}

class SaleMoneyTest : public SaleIntegrationTest, public ::testing::WithParamInterface<MoneyRow> {
protected:
    // Once the journal holds the posted request, no file may grow.
    std::thread fillTheDiskAfterThePost() {
        std::signal(SIGXFSZ, SIG_IGN);
        return std::thread([this] {
            kvrWaitUntil([this] {
                return KVRStoreFileInspector(store_.storePath()).count("KVRJournal") > 0;
            }, 20s);
            rlimit none{0, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &none);
        });
    }
    static void diskHasRoomAgain() {
        rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &unlimited);
    }
};

TEST_P(SaleMoneyTest, NothingApprovedIsLeftUnkeptOrUndone) {
    const MoneyRow& row = GetParam();
    start(row.card, row.faults, row.acquirerArguments);
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 1.0);
    KVRTestFixture::setXmlTimeout(std::chrono::milliseconds(3000));
    std::thread filler = row.diskFillsAfterThePost ? fillTheDiskAfterThePost() : std::thread();
    auto call = sell(row.amount);
    if (filler.joinable()) filler.join();
    diskHasRoomAgain();
    EXPECT_EQ(call.error, row.error);
    auto sales = storedSales();
    ASSERT_EQ(sales.size(), row.stored ? 1u : 0u);
    if (row.stored) EXPECT_EQ(sales[0]->status(), *row.stored);
    ASSERT_TRUE(sell(1000).success) << "the next sale";

    auto recovered = std::make_shared<KVRCompletionRecorder>();
    KVRJournalProvider::recover([recovered](auto) { recovered->block()(true, std::nullopt); });
    ASSERT_TRUE(recovered->waitForCalls(1, 30s));
    EXPECT_TRUE(KVRJournalProvider::pendingReversals().empty()) << "the journal owes nothing";

    auto ledger = emulators_->ledger();
    std::set<std::string> keys;
    int undone = 0;
    for (const auto& [receipt, authorisation] : ledger.items()) {
        keys.insert(authorisation.value("initiatorId", ""));
        bool approved = authorisation["response"] == "APPR" || authorisation["response"] == "PART";
        bool cancelled = authorisation.value("cancelled", false);
        auto record = KVRTransactionModel::findFirstByAttribute("receiptTransactionKey", receipt);
        bool keptAsApproved = record && record->status() == 2;
        EXPECT_TRUE(!approved || cancelled || keptAsApproved) << receipt << ": approved, neither kept nor undone";
        EXPECT_FALSE(cancelled && keptAsApproved) << receipt << ": undone, still kept as approved";
        undone += approved && cancelled;
    }
    EXPECT_EQ(undone, row.undone ? 1 : 0) << ledger.dump(2);
    EXPECT_EQ(keys.size(), ledger.size()) << "initiator keys repeat: " << ledger.dump(2);
}

INSTANTIATE_TEST_SUITE_P(Journal, SaleMoneyTest, ::testing::ValuesIn(moneyRows()),
                         [](const auto& info) { return std::string(info.param.name); });

// The acquirer cancels, but its answer is lost: the application hears no
// answer, and asking again finishes the cancellation (the acquirer approves
// the repeated advice) instead of refusing a sale still marked approved.
TEST_F(SaleIntegrationTest, ACancellationWhoseAnswerWasLostIsFinishedByTheNextCall) {
    start("chip-visa", {}, {"--advice-delay", "2"});
    ASSERT_TRUE(sell(1000).success);
    auto sale = storedSales().front();
    KVRTestFixture::setXmlTimeout(std::chrono::milliseconds(800));
    auto lost = completed([sale](KVRCompletion b) { KVRCancellationProvider::cancelTransaction(sale, b); });
    EXPECT_EQ(lost.error, KVRErrors::nullResponse());
    EXPECT_EQ(sale->status(), 2);
    ASSERT_EQ(KVRJournalProvider::pendingReversals().size(), 1u);

    KVRTestFixture::setXmlTimeout(std::chrono::milliseconds(5000));
    auto again = completed([sale](KVRCompletion b) { KVRCancellationProvider::cancelTransaction(sale, b); });
    EXPECT_TRUE(again.success) << (again.error ? again.error->description() : "");
    EXPECT_EQ(storedSales().front()->status(), 5);
    EXPECT_TRUE(KVRJournalProvider::pendingReversals().empty());
    auto log = emulators_->acquirerLog();
    EXPECT_EQ(std::count_if(log.begin(), log.end(),
                            [](const std::string& line) { return line.find("/CancellationAdvice 200 cancel APPR") != std::string::npos; }),
              2);
}

}  // namespace
