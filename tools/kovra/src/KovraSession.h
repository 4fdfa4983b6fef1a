#pragma once

#include <kovra/KVRError.h>
#include <kovra/KVRJournalEntry.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class KVRMerchantModel;
class KVRTransactionModel;

/// The public providers as blocking calls. Each operation starts one provider
/// operation, waits for its (first) completion and turns a failure into a
/// KovraCommandError carrying the library's error. Operations that use the PIN
/// pad connect to it first when no link is open (every run of the tool is its
/// own process).
class KovraSession {
public:
    using Transaction = std::shared_ptr<KVRTransactionModel>;
    using Merchant = std::shared_ptr<KVRMerchantModel>;

    struct TableCounts {
        int aids = 0;
        int capks = 0;
    };

    struct SaleRequest {
        long long amount = 0;
        unsigned type = 0;  // 0 credit, 1 debit
        unsigned instalments = 0;
    };

    /// The stored record of a sale (none when the library removed it) and the
    /// error it ended with (none when approved).
    struct SaleOutcome {
        Transaction record;
        std::optional<KVRError> error;
    };

    void connect();
    /// Connects unless the link is already open.
    void ensureConnected();

    Merchant enroll(const std::string& kovraCode);
    /// Removes the merchant enrolled with the code; a code nobody enrolled is
    /// a failure here (the library itself says nothing).
    void deactivate(const std::string& kovraCode);

    TableCounts downloadTables();
    static TableCounts storedTableCounts();
    void loadTables();

    void display(const std::string& text);
    std::string cardLastDigits();

    /// Runs a sale; a declined sale is an outcome, not an exception.
    SaleOutcome sale(const SaleRequest& request);
    /// Cancels the stored sale with the reference and returns its record.
    Transaction cancel(const std::string& reference);

    static std::vector<Transaction> transactions();
    /// Reads a card on the PIN pad and lists the transactions of that card.
    std::vector<Transaction> transactionsOfPresentedCard();
    static std::vector<Merchant> merchants();

    /// The latest sale attempt; a failure before the first.
    static KVRJournalEntry lastTransaction();
    static std::vector<KVRJournalEntry> pendingReversals();
    /// Retries what the journal owes now and returns what it acted on.
    static std::vector<KVRJournalEntry> recover();
    /// The stored transaction with this reference; a failure when none has it.
    static Transaction transactionWithReference(const std::string& reference);

    /// A sale receipt needs an approved or cancelled sale, a cancellation
    /// receipt a cancelled one; anything else is refused as bad usage.
    void sendReceipt(const std::string& reference, const std::string& destination, bool cancellation,
                     bool companyInformation);
    void sendFeedback(const std::string& message);

private:
    static void check(bool success, const std::optional<KVRError>& error);
};
