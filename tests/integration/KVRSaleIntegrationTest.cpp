#include <gtest/gtest.h>

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRTransactionProvider.h>

#include "Host/KVRCommunicationController.h"
#include "testing/KVRStoreFileInspector.h"
#include "Pinpad/KVRBluetoothConnection.h"
#include "Pinpad/KVRPinpadController.h"
#include "testing/KVRCompletionRecorder.h"
#include "testing/KVREmulators.h"
#include "testing/KVRTemporaryStore.h"
#include "testing/KVRWaitUntil.h"
#include "testing/KVRTestFixture.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <set>
#include <thread>

// What only the real emulators can show: the library's bytes on a real
// pseudo-terminal as an independent PIN pad reads them, its documents over
// real HTTPS as an independent acquirer reads them, and the journal settling
// against what the acquirer itself recorded. How each result of a sale is
// reached is the business of the sale's own suite.

namespace {

using namespace std::chrono_literals;

bool contains(const std::vector<std::string>& items, const std::string& item) {
    return std::find(items.begin(), items.end(), item) != items.end();
}

std::string describe(const KVRCompletionRecorder::Call& call) { return call.error ? call.error->description() : ""; }

class SaleIntegrationTest : public KVRTestFixture {
protected:
    void TearDown() override {
        // The link lets go of the emulator's terminal before the emulator stops.
        KVRBluetoothConnection::resetSharedController();
        KVRPinpadController::sharedController().setConnection(nullptr);
        if (emulators_) EXPECT_TRUE(emulators_->stop()) << emulators_->failure();
        emulators_.reset();
    }

    /// Starts both emulators, connects the PIN pad, enrols the emulator's
    /// first merchant and downloads its tables (the PIN pad has none yet).
    void start(std::vector<std::string> cards, std::vector<std::string> faults = {},
               std::vector<std::string> acquirerArguments = {}) {
        KVREmulators::Options options;
        options.pinpadBinary = KOVRA_PINPAD_SIM_BINARY;
        options.acquirerBinary = KOVRA_ACQUIRER_SIM_BINARY;
        options.cards = std::move(cards);
        options.pinpadFaults = std::move(faults);
        options.acquirerArguments = std::move(acquirerArguments);
        emulators_ = std::make_unique<KVREmulators>(options);
        ASSERT_TRUE(emulators_->ready()) << emulators_->failure();
        // A PIN pad that stops answering fails the sale instead of the run.
        KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 20.0);
        KVRApplicationInfo::setValue("CFBundleVersion", std::string("1.4.2"));
        ASSERT_TRUE(completed(KVRPinPadConnectionProvider::connectToPinpad).success) << "no PIN pad";
        ASSERT_TRUE(completed([](KVRCompletion b) { KVRKovraCodeActivationProvider::activateKovraCode("KOVRA-0001", b); })
                        .success);
        ASSERT_TRUE(completed(KVRTableDownloaderProvider::downLoadTables).success);
    }

    static KVRCompletionRecorder::Call completed(const std::function<void(KVRCompletion)>& operation) {
        return KVRCompletionRecorder::firstCall(operation, 90s);
    }

    static KVRCompletionRecorder::Call sell(long long amount, unsigned type = 0) {
        return completed([=](KVRCompletion block) {
            KVRTransactionProvider().sendTransactionWithValue(amount, type, 0, "pedido-1", std::move(block));
        });
    }

    static KVRCompletionRecorder::Call cancel(const std::shared_ptr<KVRTransactionModel>& sale) {
        return completed([sale](KVRCompletion b) { KVRCancellationProvider::cancelTransaction(sale, b); });
    }

    /// The stored sale of a card, as a new process would find it.
    std::shared_ptr<KVRTransactionModel> storedSale(const std::string& lastDigits) {
        store_.reopen();
        return KVRTransactionModel::findFirstByAttribute("pan", lastDigits);
    }

    KVRTemporaryStore store_;
    std::unique_ptr<KVREmulators> emulators_;
};

// Every PIN pad command of a sale, the table load and the PIN entry on the
// wire; enrolment, tables, authorisation, cancellation and receipts over TLS.
TEST_F(SaleIntegrationTest, AMerchantsDayOverTheRealLinks) {
    start({"chip-visa", "stripe-pin"});
    auto merchant = KVRMerchantModel::findFirst();
    ASSERT_TRUE(merchant && merchant->address());
    EXPECT_EQ(merchant->merchantName(), "Padaria Pão Quente Ltda");
    EXPECT_EQ(merchant->address()->zipCode(), "01304-001");
    auto shown = completed([](KVRCompletion b) { KVRDisplayProvider::displayMessage("OLA DA KOVRA    100%% SEGURO", b); });
    EXPECT_TRUE(shown.success);
    EXPECT_TRUE(contains(emulators_->commandLog(), "DSP032OLA DA KOVRA    100% SEGURO     "));

    auto chip = sell(1000);
    ASSERT_TRUE(chip.success) << describe(chip);
    auto stripe = sell(3000, 1);
    ASSERT_TRUE(stripe.success) << describe(stripe);
    auto names = emulators_->commandNames();
    for (const char* command : {"TLI", "TLR", "TLE", "GIN", "GCR", "GOC", "FNC", "GPN"}) {
        EXPECT_TRUE(contains(names, command)) << command;
    }
    EXPECT_TRUE(contains(emulators_->displayLog(), "TRANSACAO       |APROVADA        "));

    EXPECT_EQ(storedSale("4444")->type(), 1);
    auto sale = storedSale("0010");  // the records read before a reopening are left behind
    ASSERT_TRUE(sale);
    EXPECT_EQ(sale->status(), 2);
    EXPECT_EQ(sale->aid(), "A0000000031010") << "the tables' AID for the card's record";
    ASSERT_TRUE(sale->arqc()) << "the acquirer echoes the card's cryptogram";
    EXPECT_EQ(sale->arqc()->size(), 16u);

    auto cancelled = cancel(sale);
    ASSERT_TRUE(cancelled.success) << describe(cancelled);
    EXPECT_EQ(sale->status(), 5);
    // The acquirer's mail service refuses receipts that break its rules.
    for (int kind : {KVRMailProvider::kReceiptSale, KVRMailProvider::kReceiptCancellation}) {
        auto mailed = completed([&](KVRCompletion b) { KVRMailProvider::sendReceiptViaEmail(kind, sale, "c@example.com", true, b); });
        EXPECT_TRUE(mailed.success) << kind << describe(mailed);
    }
    auto outbox = emulators_->outbox();
    ASSERT_EQ(outbox.size(), 2u);
    EXPECT_EQ(outbox[0]["template"], "transaction");
    EXPECT_EQ(outbox[1]["template"], "void_transaction");
}

TEST_F(SaleIntegrationTest, APinpadThatHangsUpDuringTheChipEndsTheSaleBeforeTheAcquirer) {
    start({"chip-visa"}, {R"({"command": "GOC", "hangup": "instead"})"});
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 1.0);
    EXPECT_EQ(sell(1000).error, KVRErrors::transactionTimeout());
    for (const auto& line : emulators_->acquirerLog()) EXPECT_EQ(line.find("/Authorize"), std::string::npos) << line;
    EXPECT_FALSE(storedSale("0010"));
}

// Whatever the acquirer approved, or may have approved, ends either stored as
// approved or undone at the acquirer. Each row is one sale, then an ordinary
// one: the journal owes nothing afterwards and no initiator key repeats.
struct MoneyRow {
    const char* name;
    std::vector<std::string> faults;
    std::vector<std::string> acquirerArguments;
    long long amount;  // the acquirer answers amounts ending in 54 late
    KVRError error;
    std::optional<int> stored;  // the status of the record kept, if one is
    bool diskFillsAfterThePost = false;
};

void PrintTo(const MoneyRow& row, std::ostream* out) { *out << row.name; }

std::vector<MoneyRow> moneyRows() {
    return {
        {"AnswerAfterTheTimeOut", {}, {"--auth-delay", "5"}, 1054, KVRErrors::transactionFailed(), {}},
        {"PinpadSilentAfterTheApproval", {R"({"command": "FNC", "nth": 1, "silence": true})"}, {}, 1000,
         KVRErrors::transactionAutoCancel(), 5},
        {"DiskFillsWhileTheHostAnswers", {}, {"--reply-delay", "1"}, 1000, KVRErrors::transactionFailed(), {}, true},
    };
}

class SaleMoneyTest : public SaleIntegrationTest, public ::testing::WithParamInterface<MoneyRow> {
protected:
    // Once the journal holds the posted request, no file may grow.
    std::thread fillTheDiskAfterThePost() {
        std::signal(SIGXFSZ, SIG_IGN);
        return std::thread([this] {
            kvrWaitUntil([this] { return KVRStoreFileInspector(store_.storePath()).count("KVRJournal") > 0; }, 20s);
            rlimit none{0, RLIM_INFINITY};
            setrlimit(RLIMIT_FSIZE, &none);
        });
    }
};

TEST_P(SaleMoneyTest, NothingApprovedIsLeftUnkeptOrUndone) {
    const MoneyRow& row = GetParam();
    start({"chip-visa"}, row.faults, row.acquirerArguments);
    KVRApplicationInfo::setValue("Kovra Pinpad Read Timeout", 1.0);
    KVRTestFixture::setXmlTimeout(std::chrono::milliseconds(3000));
    std::thread filler = row.diskFillsAfterThePost ? fillTheDiskAfterThePost() : std::thread();
    auto call = sell(row.amount);
    if (filler.joinable()) filler.join();
    rlimit unlimited{RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(call.error, row.error);
    auto kept = storedSale("0010");
    EXPECT_EQ(kept ? std::optional<int>(kept->status()) : std::nullopt, row.stored);
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
        if (approved) EXPECT_NE(keptAsApproved, cancelled) << receipt << ": kept and undone alike, " << ledger.dump(2);
        undone += approved && cancelled;
    }
    EXPECT_EQ(undone, 1) << ledger.dump(2);
    EXPECT_EQ(keys.size(), ledger.size()) << "initiator keys repeat: " << ledger.dump(2);
}

INSTANTIATE_TEST_SUITE_P(Journal, SaleMoneyTest, ::testing::ValuesIn(moneyRows()),
                         [](const auto& info) { return std::string(info.param.name); });

// The acquirer cancels, but its answer is lost: the application hears no
// answer, and asking again finishes the cancellation (the acquirer approves
// the repeated advice) instead of refusing a sale still marked approved.
TEST_F(SaleIntegrationTest, ACancellationWhoseAnswerWasLostIsFinishedByTheNextCall) {
    start({"chip-visa"}, {}, {"--advice-delay", "2"});
    ASSERT_TRUE(sell(1000).success);
    auto sale = storedSale("0010");
    KVRTestFixture::setXmlTimeout(std::chrono::milliseconds(800));
    EXPECT_EQ(cancel(sale).error, KVRErrors::nullResponse());
    EXPECT_EQ(sale->status(), 2);
    ASSERT_EQ(KVRJournalProvider::pendingReversals().size(), 1u);

    KVRTestFixture::setXmlTimeout(std::chrono::milliseconds(5000));
    auto again = cancel(sale);
    EXPECT_TRUE(again.success) << describe(again);
    EXPECT_EQ(storedSale("0010")->status(), 5);
    EXPECT_TRUE(KVRJournalProvider::pendingReversals().empty());
    auto log = emulators_->acquirerLog();
    EXPECT_EQ(std::count_if(log.begin(), log.end(),
                            [](const std::string& line) { return line.find("/CancellationAdvice 200 cancel APPR") != std::string::npos; }),
              2);
}

}  // namespace
