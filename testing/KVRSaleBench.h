#pragma once

#include <kovra/KVRTransactionModel.h>

#include "testing/KVRCompletionRecorder.h"
#include "testing/KVRFakeExchange.h"
#include "testing/KVRScriptedConnection.h"
#include "testing/KVRTemporaryStore.h"

#include <memory>
#include <ostream>
#include <optional>
#include <string>
#include <vector>

/// Everything a sale needs, in process: a temporary store with an enrolled
/// merchant and EMV tables, a network that counts as up, a scripted PIN pad
/// link (KVRScriptedConnection) and a fake acquirer. The PIN pad answers a
/// card approved on line; the acquirer answers the authorisation and the
/// cancellation advice with set replies.
class KVRSaleBench {
public:
    /// An acquirer reply: a body, or a transport error in NSURLErrorDomain.
    struct HostReply {
        std::optional<std::string> body;
        std::optional<long> urlError;
    };

    static constexpr const char* kAuthorisationCode = "654321";
    static constexpr const char* kReceiptKey = "RCPT-000123";
    static constexpr const char* kReference = "REF-7E57";
    static constexpr const char* kHostArqc = "8BD1E25A0F7E4C11";
    /// Issuer data of the default replies: 91 and 8A around the card's 9F26.
    static std::string hostIccData();
    static std::string authorisationReply(const std::string& responseCode, bool withResult = true);
    static std::string cancellationReply(const std::string& responseCode);
    static HostReply body(std::string text) { return HostReply{std::move(text), std::nullopt}; }
    static HostReply failure(long urlError) { return HostReply{std::nullopt, urlError}; }

    KVRSaleBench();
    ~KVRSaleBench();
    KVRSaleBench(const KVRSaleBench&) = delete;
    KVRSaleBench& operator=(const KVRSaleBench&) = delete;

    void setAuthorisationReply(HostReply reply);
    void setCancellationReply(HostReply reply);

    /// The sale through the provider, waiting for its completion.
    KVRCompletionRecorder::Call sell(const std::shared_ptr<KVRTransactionModel>& transaction);
    static std::shared_ptr<KVRTransactionModel> newSale(long long amount, int type = 0);

    /// The display states shown, "DSP first line|second line" (or "RMC ...")
    /// without trailing blanks.
    std::vector<std::string> displays() const;
    std::vector<KVRFakeExchange::Request> hostRequests(const std::string& path) const;

    /// Advices sent while the journal said no exchange was in flight: an
    /// interrupted tool would not have waited for their answer.
    int advicesNobodyWaitsFor() const {
        std::lock_guard lock(mutex_);
        return advicesNobodyWaitsFor_;
    }

    KVRScriptedConnection& pinpad() { return *pinpad_; }
    KVRTemporaryStore& store() { return store_; }

private:
    KVRTemporaryStore store_;
    mutable std::mutex mutex_;
    HostReply authorisation_;
    HostReply cancellation_;
    int advicesNobodyWaitsFor_ = 0;
    KVRFakeExchange host_;
    std::shared_ptr<KVRScriptedConnection> pinpad_;
};

/// Errors in test failures: domain, code and text.
inline void PrintTo(const KVRError& error, std::ostream* out) { *out << error.description(); }
