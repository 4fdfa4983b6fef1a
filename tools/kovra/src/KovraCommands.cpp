#include "KovraCommands.h"

#include "KovraCommandError.h"
#include "KovraJournalFormat.h"
#include "KovraMerchantFormat.h"
#include "KovraOutput.h"
#include "KovraPinpadMessages.h"
#include "KovraTableLoadProgress.h"
#include "KovraTextTable.h"
#include "KovraTransactionFormat.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRVersion.h>

#include <algorithm>

void KovraCommands::connect() {
    KovraPinpadMessages messages(output_);
    session_.connect();
    auto device = KVRApplicationInfo::stringForKey("Kovra Pinpad");
    output_.line("connected to the PIN pad" + (device ? " " + *device : std::string()));
    output_.document({{"connected", true}, {"pinpad", device ? nlohmann::ordered_json(*device) : nullptr}});
}

void KovraCommands::enroll(const std::string& kovraCode) {
    auto merchant = session_.enroll(kovraCode);
    output_.line("enrolled:");
    for (const auto& line : KovraMerchantFormat::lines(merchant, "  ")) output_.line(line);
    output_.document(KovraMerchantFormat::toJson(merchant));
}

void KovraCommands::deactivate(const std::string& kovraCode) {
    session_.deactivate(kovraCode);
    output_.line("deactivated the merchant with KovraCode " + kovraCode);
    output_.document({{"deactivated", kovraCode}});
}

void KovraCommands::downloadTables() {
    auto counts = session_.downloadTables();
    output_.line("EMV tables downloaded and stored: " + std::to_string(counts.aids) + " AID and " +
                 std::to_string(counts.capks) + " CAPK entries");
    output_.document({{"aids", counts.aids}, {"capks", counts.capks}});
}

void KovraCommands::loadTables() {
    KovraPinpadMessages messages(output_);
    int records = 0;
    {
        KovraTableLoadProgress progress(output_, KovraTableLoadProgress::modeForStandardError());
        session_.loadTables();
        records = progress.recordsTotal();
    }
    output_.line("EMV tables loaded into the PIN pad (" + std::to_string(records) + " records)");
    output_.document({{"loaded", true}, {"records", records}});
}

void KovraCommands::display(const std::string& text) {
    KovraPinpadMessages messages(output_);
    session_.display(text);
    output_.line("shown on the PIN pad: " + text);
    output_.document({{"displayed", text}});
}

void KovraCommands::cardPan() {
    KovraPinpadMessages messages(output_);
    std::string lastDigits = session_.cardLastDigits();
    output_.line("card **** " + lastDigits);
    output_.document({{"lastDigits", lastDigits}});
}

void KovraCommands::sale(const KovraSession::SaleRequest& request) {
    KovraSession::SaleOutcome outcome;
    {
        KovraPinpadMessages messages(output_);
        KovraTableLoadProgress progress(output_, KovraTableLoadProgress::modeForStandardError());
        outcome = session_.sale(request);
    }
    if (!outcome.error) {
        if (outcome.record) {
            output_.line("sale approved:");
            printTransaction(outcome.record);
        }
        return;
    }
    auto error = KovraCommandError::fromLibrary(*outcome.error);
    if (outcome.record) {
        output_.line("sale not approved:");
        for (const auto& line : KovraTransactionFormat::detailLines(outcome.record, "  ")) output_.line(line);
        // With --json the record goes with the error, in one document.
        error.with("transaction", KovraTransactionFormat::toJson(outcome.record));
    }
    throw error;
}

void KovraCommands::cancel(const std::string& reference) {
    auto transaction = session_.cancel(reference);
    output_.line("cancelled:");
    printTransaction(transaction);
}

void KovraCommands::list(const std::optional<std::string>& lastDigits, bool presentedCard) {
    std::vector<KovraSession::Transaction> transactions;
    if (presentedCard) {
        KovraPinpadMessages messages(output_);
        transactions = session_.transactionsOfPresentedCard();
    } else {
        transactions = KovraSession::transactions();
    }
    if (lastDigits) {
        std::erase_if(transactions, [&lastDigits](const auto& transaction) { return transaction->pan() != lastDigits; });
    }
    printTransactions(transactions);
}

void KovraCommands::merchants() {
    auto merchants = KovraSession::merchants();
    if (merchants.empty()) output_.line("no merchant is enrolled");
    for (const auto& merchant : merchants)
        for (const auto& line : KovraMerchantFormat::lines(merchant)) output_.line(line);
    output_.document(KovraMerchantFormat::toJson(merchants));
}

void KovraCommands::last() {
    auto entry = KovraSession::lastTransaction();
    output_.line("last sale:");
    for (const auto& line : KovraJournalFormat::detailLines(entry, "  ")) output_.line(line);
    output_.document(KovraJournalFormat::toJson(entry));
}

void KovraCommands::pending() {
    auto entries = KovraSession::pendingReversals();
    if (entries.empty()) output_.line("nothing is owed to the acquirer");
    else
        for (const auto& line : KovraJournalFormat::tableLines(entries)) output_.line(line);
    output_.document(KovraJournalFormat::toJson(entries));
}

void KovraCommands::recover() {
    auto entries = KovraSession::recover();
    if (entries.empty()) output_.line("nothing was owed to the acquirer");
    for (const auto& entry : entries) {
        output_.line(entry.initiatorTransactionKey + ": " + entry.state +
                     (entry.isUnfinished() && entry.lastError ? " (" + *entry.lastError + ")" : ""));
    }
    auto left = KovraSession::pendingReversals();
    if (!left.empty()) {
        throw KovraCommandError::failure(std::to_string(left.size()) + " still owed to the acquirer (see kovra pending)")
            .with("entries", KovraJournalFormat::toJson(entries));
    }
    output_.document(KovraJournalFormat::toJson(entries));
}

void KovraCommands::receipt(const std::string& reference, const std::string& destination, bool cancellation,
                            bool companyInformation) {
    session_.sendReceipt(reference, destination, cancellation, companyInformation);
    const char* kind = cancellation ? "cancellation" : "sale";
    output_.line(std::string(kind) + " receipt of " + reference + " sent to " + destination);
    output_.document({{"sent", true}, {"reference", reference}, {"to", destination}, {"kind", kind},
                      {"companyInformation", companyInformation}});
}

void KovraCommands::feedback(const std::string& message) {
    session_.sendFeedback(message);
    output_.line("feedback sent");
    output_.document({{"sent", true}});
}

std::string KovraCommands::versionLine() {
    return std::string("kovra ") + KovraSDKVersionString + " (library version number " +
           std::to_string(static_cast<long long>(KovraSDKVersionNumber)) + ")";
}

void KovraCommands::version() {
    output_.line(versionLine());
    output_.document({{"version", std::string(KovraSDKVersionString)},
                      {"versionNumber", static_cast<long long>(KovraSDKVersionNumber)}});
}

void KovraCommands::printTransaction(const KovraSession::Transaction& transaction) {
    for (const auto& line : KovraTransactionFormat::detailLines(transaction, "  ")) output_.line(line);
    output_.document(KovraTransactionFormat::toJson(transaction));
}

void KovraCommands::printTransactions(const std::vector<KovraSession::Transaction>& transactions) {
    if (transactions.empty()) {
        output_.line("no transactions");
    } else {
        for (const auto& line : KovraTransactionFormat::table(transactions).lines()) output_.line(line);
    }
    output_.document(KovraTransactionFormat::toJson(transactions));
}
