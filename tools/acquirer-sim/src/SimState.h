#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace acqsim {

struct AuthorisationRecord {
    std::string receiptId;          // RcptTxId we issued
    std::string initiatorId;        // InitrTxId of the request
    std::string reference;          // TxRef of the request
    std::string merchantId;         // Mrchnt/Id/Id of the request
    std::string amount;             // TtlAmt, integer cents
    std::string response;           // APPR, DECL, PART or TECH
    std::string authorisationCode;
    std::string time;
};

struct CancellationVerdict {
    bool approved = false;
    std::string reason;             // why it was declined, or that it was a repeat
};

// Everything that must survive a restart, in one JSON file (state.json):
//   { "nextReceipt": n, "outboxCounter": n,
//     "merchantsSeen": { KovraCode: { "saleAffiliationKey", "enrolments",
//                                     "tableDownloads", "lastSeen" } },
//     "authorisations": { RcptTxId: { "initiatorId", "reference", "merchantId",
//                         "amount", "response", "authorisationCode", "time",
//                         "cancelled", "cancelledAt" } } }
// Each change is written at once (temporary file, then rename). Safe to use
// from several threads.
class SimState {
public:
    // Reads the file when it exists; throws std::runtime_error when it is not
    // a state file.
    explicit SimState(std::filesystem::path file);

    void noteEnrolment(const std::string& kovraCode, const std::string& saleAffiliationKey);
    void noteTableDownload(const std::string& kovraCode, const std::string& saleAffiliationKey);

    // A new receipt transaction identifier: local date "yyMMdd" and a
    // ten-digit sequence number that never repeats in this state directory.
    std::string nextReceiptId();
    void recordAuthorisation(const AuthorisationRecord& record);

    // Approves, and marks cancelled, an approved or partly approved
    // authorisation whose keys, merchant, reference and amount all match; an
    // empty receipt identifier finds it by its initiator identifier. One
    // already cancelled is approved again (a repeated advice); anything else
    // is declined.
    CancellationVerdict cancel(const std::string& receiptId, const std::string& initiatorId,
                               const std::string& amount, const std::string& merchantId,
                               const std::string& reference);

    // The amounts (integer cents) of the approved or partly approved
    // authorisations that gave this authorisation code; empty when none did.
    std::vector<std::string> approvedAmounts(const std::string& authorisationCode);

    // 1, 2, 3... across runs.
    int nextOutboxNumber();

private:
    nlohmann::json* findLocked(const std::string& receiptId, const std::string& initiatorId);
    void saveLocked();
    nlohmann::json& merchantEntryLocked(const std::string& kovraCode, const std::string& saleAffiliationKey);

    std::filesystem::path file_;
    std::mutex mutex_;
    nlohmann::json data_;
};

} // namespace acqsim
