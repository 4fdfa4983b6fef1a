#pragma once

#include "KovraSession.h"

#include <optional>
#include <string>

class KovraOutput;

/// The tool's commands: each calls one provider through the session and
/// prints what came back, as text or JSON. Failures are thrown as
/// KovraCommandError.
class KovraCommands {
public:
    explicit KovraCommands(KovraOutput& output) : output_(output) {}

    void connect();
    void enroll(const std::string& kovraCode);
    void deactivate(const std::string& kovraCode);
    void downloadTables();
    void loadTables();
    void display(const std::string& text);
    void cardPan();
    void sale(const KovraSession::SaleRequest& request);
    void cancel(const std::string& reference);
    /// All stored transactions, those whose card ends in `lastDigits`, or
    /// (`presentedCard`) those of the card presented to the PIN pad.
    void list(const std::optional<std::string>& lastDigits, bool presentedCard);
    void merchants();
    /// The latest sale attempt, with what the journal knows of it.
    void last();
    /// Reversals and cancellations the acquirer has not answered.
    void pending();
    /// Retries them now; a failure when some are still owed afterwards.
    void recover();
    void receipt(const std::string& reference, const std::string& destination, bool cancellation,
                 bool companyInformation);
    void feedback(const std::string& message);
    void version();
    /// "kovra VERSION (library version number N)".
    static std::string versionLine();

private:
    void printTransaction(const KovraSession::Transaction& transaction);
    void printTransactions(const std::vector<KovraSession::Transaction>& transactions);

    KovraOutput& output_;
    KovraSession session_;
};
