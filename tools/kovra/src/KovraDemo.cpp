#include "KovraDemo.h"

#include "KovraCommandError.h"
#include "KovraDemoEnvironment.h"
#include "KovraMerchantFormat.h"
#include "KovraOutput.h"
#include "KovraPinpadMessages.h"
#include "KovraSettings.h"
#include "KovraTableLoadProgress.h"
#include "KovraText.h"
#include "KovraTextTable.h"
#include "KovraTransactionFormat.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include <fstream>

namespace {

constexpr int kSteps = 9;
const std::string kIndent = "      ";

// The acquirer emulator declines amounts whose last two digits are 51.
const KovraSession::SaleRequest kChipSale{12345, 0, 0};
const KovraSession::SaleRequest kDeclinedSale{5051, 0, 0};
const KovraSession::SaleRequest kStripeSale{2590, 1, 0};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string saleTitle(const KovraSession::SaleRequest& request) {
    return KovraText::reais(request.amount) + (request.type == 1 ? " debit" : " credit");
}

}  // namespace

KovraDemo::KovraDemo(Options options, KovraOutput& output, KovraInterrupts& interrupts)
    : options_(std::move(options)), output_(output), interrupts_(interrupts) {}

void KovraDemo::run() {
    started_ = std::chrono::steady_clock::now();
    KovraDemoEnvironment environment(options_.keepDirectory, options_.writePause, interrupts_);
    output_.line("Kovra demo: a merchant's day against the PIN pad and acquirer emulators");
    output_.line("");
    environment.start();
    if (options_.verbose) KVRApplicationInfo::setValue("Kovra Debugginho Developer", true);
    KovraSettings::routeLogs(options_.verbose);
    output_.line("  work directory  " + environment.directory() +
                 (environment.kept() ? " (kept)" : " (removed at the end; --keep DIR keeps it)"));
    output_.line("  acquirer        " + environment.acquirerUrl() + " (kovra-acquirer-sim)");
    output_.line("  PIN pad         " + environment.pinpadDevice() + " (kovra-pinpad-sim), write pause " +
                 KovraText::seconds(options_.writePause) + " s");
    std::string cards;
    for (const auto& card : KovraDemoEnvironment::cards()) cards += (cards.empty() ? "" : ", ") + card;
    output_.line("  cards           " + cards + ", one per card read");
    runSteps(environment);
}

void KovraDemo::runSteps(KovraDemoEnvironment& environment) {
    environment_ = &environment;
    step("Enrol the merchant with KovraCode " + std::string(kKovraCode), [this] { enrol(); });
    step("Download the EMV tables from the acquirer", [this] { downloadTables(); });
    step("Connect to the PIN pad", [this] { connect(); });
    KovraSession::Transaction first;
    step("Chip sale of " + saleTitle(kChipSale) + " (card chip-visa; the PIN pad has no tables yet)",
         [&] { first = approvedSale(kChipSale); });
    step("Sale of " + saleTitle(kDeclinedSale) + " (card chip-master; the acquirer declines amounts ending in 51)",
         [&] { declinedSale(kDeclinedSale); });
    step("Magnetic-stripe sale of " + saleTitle(kStripeSale) + " with PIN (card stripe-pin)",
         [&] { approvedSale(kStripeSale); });
    step("List the stored transactions", [this] { listTransactions(); });
    step("Cancel the first sale", [&] { cancel(first); });
    step("E-mail the cancellation receipt to " + std::string(kReceiptAddress),
         [&] { emailReceipt(first, environment); });
    summary(environment);
}

void KovraDemo::step(const std::string& title, const std::function<void()>& body) {
    ++stepNumber_;
    output_.line("");
    output_.line("[" + std::to_string(stepNumber_) + "/" + std::to_string(kSteps) + "] " + title);
    auto start = std::chrono::steady_clock::now();
    try {
        body();
    } catch (const KovraCommandError& error) {
        say("FAILED: " + std::string(error.what()));
        std::string logs = environment_->kept() ? "the emulators' logs are in " + environment_->directory()
                                                : "--keep DIR keeps the emulators' logs";
        throw KovraCommandError::failure("the demo stopped at step " + std::to_string(stepNumber_) + " (" + title +
                                         "); " + logs);
    }
    say("ok (" + KovraText::seconds(secondsSince(start)) + " s)");
}

void KovraDemo::say(const std::string& text) { output_.line(kIndent + text); }

void KovraDemo::enrol() {
    auto merchant = session_.enroll(kKovraCode);
    merchantName_ = merchant->merchantName().value_or("");
    for (const auto& line : KovraMerchantFormat::lines(merchant, kIndent)) output_.line(line);
}

void KovraDemo::downloadTables() {
    auto counts = session_.downloadTables();
    say("stored " + std::to_string(counts.aids) + " AID and " + std::to_string(counts.capks) +
        " CAPK entries; they reach the PIN pad with the first sale");
}

void KovraDemo::connect() {
    KovraPinpadMessages messages(output_, kIndent + "pinpad: ");
    session_.connect();
    say("connected through " + KVRApplicationInfo::stringForKey("Kovra Pinpad").value_or("?"));
}

KovraSession::Transaction KovraDemo::approvedSale(const KovraSession::SaleRequest& request) {
    KovraSession::SaleOutcome outcome;
    int loaded = 0;
    {
        KovraPinpadMessages messages(output_, kIndent + "pinpad: ");
        auto mode = KovraTableLoadProgress::modeForStandardError() == KovraTableLoadProgress::Bar
                        ? KovraTableLoadProgress::Bar
                        : KovraTableLoadProgress::Quiet;
        KovraTableLoadProgress progress(output_, mode);
        outcome = session_.sale(request);
        loaded = progress.recordsTotal();
    }
    if (loaded > 0)
        say("the PIN pad reported missing tables: " + std::to_string(loaded) +
            " records loaded into it, then the card was read again");
    showDisplay();
    if (outcome.error) throw KovraCommandError::fromLibrary(*outcome.error);
    if (!outcome.record) throw KovraCommandError::failure("the approved sale left no stored record");
    say("approved:");
    for (const auto& line : KovraTransactionFormat::detailLines(outcome.record, kIndent + "  ")) output_.line(line);
    ++tally_.approved;
    return outcome.record;
}

void KovraDemo::declinedSale(const KovraSession::SaleRequest& request) {
    KovraSession::SaleOutcome outcome;
    {
        KovraPinpadMessages messages(output_, kIndent + "pinpad: ");
        outcome = session_.sale(request);
    }
    showDisplay();
    if (!outcome.error) throw KovraCommandError::failure("the sale was approved; a decline was expected");
    if (*outcome.error != KVRErrors::transactionRejected()) throw KovraCommandError::fromLibrary(*outcome.error);
    say("declined as expected: " + std::string(KovraCommandError::fromLibrary(*outcome.error).what()));
    if (!outcome.record || outcome.record->status() != 1)
        throw KovraCommandError::failure("the declined sale should stay stored with status 1");
    for (const auto& line : KovraTransactionFormat::detailLines(outcome.record, kIndent + "  ")) output_.line(line);
    ++tally_.declined;
}

void KovraDemo::showDisplay() {
    if (auto shown = environment_->lastDisplay()) say("the PIN pad shows \"" + *shown + "\"");
}

void KovraDemo::listTransactions() {
    auto transactions = KovraSession::transactions();
    for (const auto& line : KovraTransactionFormat::table(transactions).lines()) say(line);
}

void KovraDemo::cancel(const KovraSession::Transaction& sale) {
    std::string reference = sale->reference().value_or("");
    say("reference " + reference);
    auto cancelled = session_.cancel(reference);
    if (cancelled->status() != 5) throw KovraCommandError::failure("the cancelled sale's status is not 5");
    say("status now: " + cancelled->statusString());
    ++tally_.cancelled;
}

void KovraDemo::emailReceipt(const KovraSession::Transaction& sale, const KovraDemoEnvironment& environment) {
    session_.sendReceipt(sale->reference().value_or(""), kReceiptAddress, true, true);
    auto mail = environment.newestOutboxFile();
    if (!mail) throw KovraCommandError::failure("the acquirer's outbox is empty");
    say("the mail service received " + *mail + ":");
    std::ifstream in(*mail);
    for (std::string line; std::getline(in, line);) say("  " + line);
}

void KovraDemo::summary(const KovraDemoEnvironment& environment) {
    int commands = environment.pinpadCommandCount();
    double pauses = commands * options_.writePause;
    output_.line("");
    output_.line("Summary");
    say("merchant        " + merchantName_ + " (" + kKovraCode + ")");
    say("sales           " + std::to_string(tally_.approved + tally_.declined) + ": " +
        std::to_string(tally_.approved) + " approved, " + std::to_string(tally_.declined) + " declined; " +
        std::to_string(tally_.cancelled) + " cancelled");
    say("PIN pad         " + std::to_string(commands) + " commands; the write pause of " +
        KovraText::seconds(options_.writePause) + " s after each cost " + KovraText::seconds(pauses) + " s");
    say("total time      " + KovraText::seconds(secondsSince(started_)) + " s");
    if (environment.kept()) {
        say("kept in         " + environment.directory());
        say("look again with kovra --info " + environment.infoFile() + " --data-dir " +
            environment.dataDirectory() + " list");
    }
}
