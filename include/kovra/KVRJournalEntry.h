#pragma once

#include <kovra/KVRExport.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class KVRTransactionModel;

/// One exchange with the acquirer that can move money, as the journal keeps
/// it: written to the store before the request is posted, brought up to date
/// as the answer, the sale's end and any reversal come in.
struct KOVRA_API KVRJournalEntry {
    enum class Kind { Authorisation, Cancellation };

    // The states an entry passes through. Authorisations: sent, then answered,
    // then settled (nothing owed), reversal pending, reversed or reversal
    // refused. Cancellations asked for by the application: cancellation
    // pending, then cancelled or cancellation refused.
    static constexpr const char* kSent = "sent";
    static constexpr const char* kAnswered = "answered";
    static constexpr const char* kSettled = "settled";
    static constexpr const char* kReversalPending = "reversal pending";
    static constexpr const char* kReversed = "reversed";
    static constexpr const char* kReversalRefused = "reversal refused";
    static constexpr const char* kCancellationPending = "cancellation pending";
    static constexpr const char* kCancelled = "cancelled";
    static constexpr const char* kCancellationRefused = "cancellation refused";

    std::int64_t identifier = 0;
    Kind kind = Kind::Authorisation;
    std::string state = kSent;
    std::chrono::system_clock::time_point date;
    /// The sale's initiator transaction key (InitrTxId).
    std::string initiatorTransactionKey;
    /// The transaction reference (TxRef) the request carried.
    std::optional<std::string> reference;
    /// Cents, as the request carried them.
    std::string amount;
    /// The merchant's sale affiliation key.
    std::optional<std::string> merchantKey;
    /// The host's response code (0 declined, 1 approved, 2 partly approved,
    /// 3 technical error); none while no readable answer came.
    std::optional<int> hostResponse;
    std::optional<std::string> receiptTransactionKey;
    std::optional<std::string> authorisationCode;
    /// The reference the host answered with.
    std::optional<std::string> hostReference;
    /// The sale's result code once it ended.
    std::optional<int> result;
    /// Cancellation advices sent for this entry, and why the last one failed.
    int attempts = 0;
    std::optional<std::string> lastError;
    /// The process that made the exchange.
    long long processIdentifier = 0;
    /// The count field of the initiator key, when the library built the key.
    std::optional<long long> keyCount;

    /// The stored sale the entry belongs to, when it is stored.
    std::shared_ptr<KVRTransactionModel> transaction;

    /// The host approved the request in full or in part.
    bool hostApproved() const { return hostResponse == 1 || hostResponse == 2; }
    /// Work is left: an answer never stored, or an advice to (re)send.
    bool isUnfinished() const {
        return state == kSent || state == kAnswered || state == kReversalPending || state == kCancellationPending;
    }
};
