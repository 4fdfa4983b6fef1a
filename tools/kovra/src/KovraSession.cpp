#include "KovraSession.h"

#include "KovraCommandError.h"
#include "KovraCompletionWaiter.h"

#include <kovra/KVRCancellationProvider.h>
#include <kovra/KVRCardProvider.h>
#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRJournalProvider.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMailProvider.h>
#include <kovra/KVRMerchantListProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinPadConnectionProvider.h>
#include <kovra/KVRTableDownloaderProvider.h>
#include <kovra/KVRTableLoaderProvider.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionListProvider.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRTransactionProvider.h>
#include <kovra/KVRValidationProvider.h>

#include <algorithm>

namespace {

// Elements named `name` in an XML text block: "<name>" or "<name " openings.
int countElements(const std::optional<std::string>& text, const std::string& name) {
    if (!text) return 0;
    int count = 0;
    for (size_t at = text->find("<" + name); at != std::string::npos; at = text->find("<" + name, at + 1)) {
        char next = at + name.size() + 1 < text->size() ? (*text)[at + name.size() + 1] : '\0';
        if (next == '>' || next == ' ' || next == '/') ++count;
    }
    return count;
}

template <class Payload>
void checkResult(const typename KovraCompletionWaiter<Payload>::Result& result) {
    if (result.success) return;
    if (result.error) throw KovraCommandError::fromLibrary(*result.error);
    throw KovraCommandError::failure("the library reported a failure without saying why");
}

KovraCompletionWaiter<>::Result waitFor(void (*operation)(KVRCompletion)) {
    KovraCompletionWaiter<> waiter;
    operation(waiter.completion());
    return waiter.wait();
}

}  // namespace

void KovraSession::check(bool success, const std::optional<KVRError>& error) {
    checkResult<std::monostate>({success, {}, error});
}

void KovraSession::connect() {
    auto result = waitFor(&KVRPinPadConnectionProvider::connectToPinpad);
    check(result.success, result.error);
}

void KovraSession::ensureConnected() {
    if (!KVRValidationProvider::validatePinpadConnection()) connect();
}

KovraSession::Merchant KovraSession::enroll(const std::string& kovraCode) {
    KovraCompletionWaiter<> waiter;
    KVRKovraCodeActivationProvider::activateKovraCode(kovraCode, waiter.completion());
    auto result = waiter.wait();
    check(result.success, result.error);
    auto merchant = KVRMerchantModel::findFirstByAttribute("kovracode", kovraCode);
    if (!merchant) throw KovraCommandError::failure("the enrolment succeeded but no merchant record was stored");
    return merchant;
}

void KovraSession::deactivate(const std::string& kovraCode) {
    if (!KVRMerchantModel::findFirstByAttribute("kovracode", kovraCode))
        throw KovraCommandError::usage("no merchant is enrolled with the KovraCode " + kovraCode);
    KVRKovraCodeActivationProvider::deactivateMerchantWithKovraCode(kovraCode);
}

KovraSession::TableCounts KovraSession::downloadTables() {
    auto result = waitFor(&KVRTableDownloaderProvider::downLoadTables);
    check(result.success, result.error);
    return storedTableCounts();
}

KovraSession::TableCounts KovraSession::storedTableCounts() {
    auto tables = KVRTmsTableModel::findFirst();
    if (!tables) return {};
    return {countElements(tables->aidTable(), "Aid"), countElements(tables->capkTable(), "Capk")};
}

void KovraSession::loadTables() {
    ensureConnected();
    auto result = waitFor(&KVRTableLoaderProvider::loadTables);
    check(result.success, result.error);
}

void KovraSession::display(const std::string& text) {
    ensureConnected();
    KovraCompletionWaiter<> waiter;
    KVRDisplayProvider::displayMessage(text, waiter.completion());
    auto result = waiter.wait();
    check(result.success, result.error);
}

std::string KovraSession::cardLastDigits() {
    ensureConnected();
    KovraCompletionWaiter<std::optional<std::string>> waiter;
    KVRCardProvider::getCardPan(waiter.completionWithPayload<std::optional<std::string>>());
    auto result = waiter.wait();
    checkResult<std::optional<std::string>>(result);
    return result.payload.value_or("");
}

KovraSession::SaleOutcome KovraSession::sale(const SaleRequest& request) {
    ensureConnected();
    KovraCompletionWaiter<Transaction> waiter;
    auto completion = waiter.completionWithPayload<Transaction>();
    KVRTransactionProvider provider;
    provider.sendTransactionWithValueReturningRecord(
        request.amount, request.type, request.instalments, std::string(),
        [completion](bool success, std::optional<KVRError> error, Transaction record) {
            completion(success, std::move(record), std::move(error));
        });
    auto result = waiter.wait();
    SaleOutcome outcome;
    outcome.record = result.payload;
    // A failure always carries a catalogue error; the generic one stands in
    // should a completion ever come without.
    if (!result.success) outcome.error = result.error.value_or(KVRErrors::genericError());
    return outcome;
}

KovraSession::Transaction KovraSession::cancel(const std::string& reference) {
    auto transaction = transactionWithReference(reference);
    KovraCompletionWaiter<> waiter;
    KVRCancellationProvider::cancelTransaction(transaction, waiter.completion());
    auto result = waiter.wait();
    check(result.success, result.error);
    return transaction;
}

std::vector<KovraSession::Transaction> KovraSession::transactions() {
    return KVRTransactionListProvider::listTransactions();
}

std::vector<KovraSession::Transaction> KovraSession::transactionsOfPresentedCard() {
    ensureConnected();
    KovraCompletionWaiter<std::vector<Transaction>> waiter;
    KVRTransactionListProvider::listTransactionsByPan(waiter.completionWithPayload<std::vector<Transaction>>());
    auto result = waiter.wait();
    checkResult<std::vector<Transaction>>(result);
    return result.payload;
}

std::vector<KovraSession::Merchant> KovraSession::merchants() { return KVRMerchantListProvider::listMerchants(); }

KVRJournalEntry KovraSession::lastTransaction() {
    auto last = KVRJournalProvider::lastTransaction();
    if (!last) throw KovraCommandError::usage("no sale has been made yet");
    return *last;
}

std::vector<KVRJournalEntry> KovraSession::pendingReversals() { return KVRJournalProvider::pendingReversals(); }

std::vector<KVRJournalEntry> KovraSession::recover() {
    KovraCompletionWaiter<std::vector<KVRJournalEntry>> waiter;
    auto completion = waiter.completionWithPayload<std::vector<KVRJournalEntry>>();
    KVRJournalProvider::recover(
        [completion](std::vector<KVRJournalEntry> entries) { completion(true, std::move(entries), std::nullopt); });
    return waiter.wait().payload;
}

KovraSession::Transaction KovraSession::transactionWithReference(const std::string& reference) {
    for (const auto& transaction : KVRTransactionListProvider::listTransactions())
        if (transaction->reference() == reference) return transaction;
    throw KovraCommandError::usage("no stored transaction has the reference " + reference);
}

void KovraSession::sendReceipt(const std::string& reference, const std::string& destination, bool cancellation,
                               bool companyInformation) {
    auto transaction = transactionWithReference(reference);
    // The library mails whatever it is given; a receipt must not say a
    // declined sale was paid, nor that a standing one was cancelled.
    constexpr int kApproved = 2;
    constexpr int kCancelled = 5;
    int status = transaction->status();
    if (cancellation && status != kCancelled) {
        throw KovraCommandError::usage("the sale " + reference + " is not cancelled (" + transaction->statusString() +
                                       "): it has no cancellation receipt");
    }
    if (!cancellation && status != kApproved && status != kCancelled) {
        throw KovraCommandError::usage("the sale " + reference + " was neither approved nor cancelled (" +
                                       transaction->statusString() + "): it has no receipt");
    }
    KovraCompletionWaiter<> waiter;
    KVRMailProvider::sendReceiptViaEmail(
        cancellation ? KVRMailProvider::kReceiptCancellation : KVRMailProvider::kReceiptSale, transaction,
        destination, companyInformation, waiter.completion());
    auto result = waiter.wait();
    check(result.success, result.error);
}

void KovraSession::sendFeedback(const std::string& message) {
    KovraCompletionWaiter<> waiter;
    KVRMailProvider::sendEmailFeedback(message, waiter.completion());
    auto result = waiter.wait();
    check(result.success, result.error);
}
