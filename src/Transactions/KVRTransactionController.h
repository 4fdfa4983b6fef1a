#pragma once

#include <kovra/KVRJournalEntry.h>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class KVRAcceptorAuthorisation;
class KVRAcceptorAuthorisationResponse;
class KVRCommandController;
class KVRGcrCommandResponse;
class KVRGocCommandResponse;
class KVRGpnCommandResponse;
class KVRTransactionModel;

/// Runs one card sale, from the PIN pad's identity to the last display
/// message, and returns its result, a KVRTransactionStatus.
///
/// It runs on the main worker and blocks it for the whole sale. It never
/// reports to the application: the caller turns the code into an error and
/// keeps or deletes the record. The authorisation is journalled before it is
/// posted (nothing is posted when it cannot be), and the host's answer is
/// saved with the record, its status set to the host's decision, before the
/// card is told; the caller settles the journal entry when the sale ends.
class KVRTransactionController {
public:
    KVRTransactionController();
    ~KVRTransactionController();
    KVRTransactionController(const KVRTransactionController&) = delete;
    KVRTransactionController& operator=(const KVRTransactionController&) = delete;

    /// The whole sale: identity, card read, then the chip or stripe flow. A
    /// PIN pad without tables gets them and the sale starts again.
    int sendTransaction(const std::shared_ptr<KVRTransactionModel>& transaction);
    /// The stripe flow for a card already read: optional PIN entry, host
    /// authorisation, outcome display. No FNC.
    int sendTransactionWithMagnectStripe(const std::shared_ptr<KVRTransactionModel>& transaction,
                                         const std::shared_ptr<KVRGcrCommandResponse>& gcrResponse);

    /// KVRInitiatorTransactionKey::generate; the count is kept for the
    /// journal entry of the authorisation.
    std::optional<std::string> generateInitiatorTransactionKeyWithSerialNumber(const std::string& serialNumber);
    /// "Visa" for the first three records of the acquirer's table, "MasterCard" after.
    std::string getFlagWithGcrResponse(const KVRGcrCommandResponse& gcrResponse);
    /// The AID of the stored table record the card matched; "" without stored
    /// tables, nothing when no record matches.
    std::optional<std::string> getTransactionAidWithGcrResponse(const KVRGcrCommandResponse& gcrResponse);
    /// The value of tag 9F26 (the card's cryptogram) in BER-TLV hexadecimal
    /// text. A truncated or malformed text ends the walk where it breaks.
    std::optional<std::string> getArqcWithEmv(const std::string& emv);

    /// The journal entry of the authorisation this sale sent; none when
    /// nothing went to the acquirer.
    std::optional<KVRJournalEntry>& journalEntry() { return journal_; }

private:
    struct ServiceCode;
    struct HostExchange;

    std::optional<int> runOnce(const std::shared_ptr<KVRTransactionModel>& transaction);
    std::optional<int> dispatchCardRead(const std::shared_ptr<KVRTransactionModel>& transaction,
                                        const std::shared_ptr<KVRGcrCommandResponse>& gcr);
    int dispatchMagneticStripe(const std::shared_ptr<KVRTransactionModel>& transaction,
                               const std::shared_ptr<KVRGcrCommandResponse>& gcr);
    int runChip(const std::shared_ptr<KVRTransactionModel>& transaction,
                const std::shared_ptr<KVRGcrCommandResponse>& gcr);
    int runChipOnline(const std::shared_ptr<KVRTransactionModel>& transaction, const KVRGcrCommandResponse& gcr,
                      const KVRGocCommandResponse& goc);
    int finishChip(const std::string& actionCode, int result, const std::optional<std::string>& iccData);
    bool acceptAnswer(KVRTransactionModel& transaction, const HostExchange& exchange, const KVRGcrCommandResponse& gcr,
                      int result, std::optional<std::string>& iccData);
    bool journalAuthorisation(const KVRTransactionModel& transaction, const KVRAcceptorAuthorisation& request);
    void noteAnswer(const HostExchange& exchange);
    int runStripeOnline(const std::shared_ptr<KVRTransactionModel>& transaction, const KVRGcrCommandResponse& gcr,
                        const ServiceCode& serviceCode);

    void identifyPinpad(KVRTransactionModel& transaction);
    HostExchange authorise(const KVRTransactionModel& transaction, const KVRGcrCommandResponse& gcr,
                           const KVRGocCommandResponse* goc, const KVRGpnCommandResponse* gpn);
    void fillTransaction(KVRTransactionModel& transaction, const KVRAcceptorAuthorisationResponse& response,
                         const KVRGcrCommandResponse& gcr, const KVRAcceptorAuthorisation& request);
    int recoverFromException(const std::shared_ptr<KVRTransactionModel>& transaction, const std::exception& exception,
                             bool chipFlow);
    int cancelAtHost(const std::shared_ptr<KVRTransactionModel>& transaction);

    void showChipMessage(const char* firstLine, const char* secondLine);
    void showStripeMessage(const char* message);
    void showWithoutFailing(const std::function<void()>& show);

    std::unique_ptr<KVRCommandController> commands_;
    /// Set once the authorisation request may have reached the acquirer: from
    /// then on a failure has to be undone at the host.
    bool authorisationSent_ = false;
    std::optional<KVRJournalEntry> journal_;
    /// The count field of the key this sale made, if it made one.
    std::optional<long long> keyCount_;
};
