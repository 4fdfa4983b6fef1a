#include "Transactions/KVRTransactionController.h"

#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Host/KVRCommunicationController.h"
#include "Host/KVRServiceEndpoint.h"
#include "Host/Messages/KVRAcceptorAuthorisation.h"
#include "Host/Messages/KVRAcceptorAuthorisationResponse.h"
#include "Host/Messages/KVRAuthorisationRequestFactory.h"
#include "Host/TBXML.h"
#include "Persistence/KVRJournal.h"
#include "Persistence/KVRTransactionStatus.h"
#include "Pinpad/Commands/KVRAbecsStatus.h"
#include "Pinpad/Commands/KVRFncCommandRequest.h"
#include "Pinpad/KVRCommandController.h"
#include "Pinpad/KVRLinkException.h"
#include "Platform/KVRCallStack.h"
#include "Platform/KVRProcessInfo.h"
#include "Tms/KVRAid.h"
#include "Tms/KVRTmsController.h"
#include "Transactions/KVRCancellationController.h"
#include "Transactions/KVRInitiatorTransactionKey.h"
#include "Transactions/KVRReversalController.h"
#include "Utils/KVRBerTlv.h"
#include "Utils/KVRCardDataMasking.h"
#include "Utils/KVRClock.h"
#include "Utils/KVRStringUtil.h"

namespace {

// GCR card types.
constexpr int32_t kCardStripe = 0;
constexpr int32_t kCardChip = 3;
constexpr int32_t kCardContactlessChip = 6;

// GOC and FNC decisions.
constexpr int32_t kGocDeclinedOffline = 1;
constexpr int32_t kGocGoOnline = 2;
constexpr int32_t kFncApproved = 0;
constexpr int32_t kFncDeclinedByCard = 1;
constexpr int32_t kFncDeclinedByNetwork = 2;

constexpr int32_t kLastVisaRecord = 3;

const char* const kProcessing = "Processando...";
const char* const kTransaction = "TRANSACAO";
const char* const kStripeCancelled = "TRANSACAO       CANCELADA";
const char* const kStripeTimeout = "TEMPO           EXPIROU";
const char* const kStripeFailed = "TRANSACAO       FALHOU";
const char* const kStripeApproved = "TRANSACAO       APROVADA";
const char* const kStripeDeclined = "TRANSACAO       NEGADA";

// The host's decision, as the card is told it and as the sale ends.
struct HostDecision {
    const char* actionCode;
    int result;
};

std::optional<HostDecision> chipDecision(KVRResponseCode code) {
    switch (code) {
        case KVRResponseCodeDECL: return HostDecision{"10", KVRTransactionStatusDeclined};
        case KVRResponseCodeAPPR: return HostDecision{"00", KVRTransactionStatusApproved};
        case KVRResponseCodePART: return HostDecision{"10", KVRTransactionStatusPartlyApproved};
        case KVRResponseCodeTECH: return HostDecision{"05", KVRTransactionStatusTechnicalError};
    }
    return std::nullopt;
}

KVRNumber amountOf(const KVRTransactionModel& transaction) { return transaction.amount().value_or(KVRNumber(0LL)); }

// The first and third service-code digits of a stripe card's track 2
// ("<PAN>=<YYMM><service code>..."); empty without a second track.
std::pair<std::string, std::string> serviceCodeDigits(const KVRGcrCommandResponse& gcr) {
    if (gcr.secondTrackLength <= 0) return {};
    auto pieces = KVRStringUtil::split(gcr.secondTrack, "=");
    if (pieces.size() < 2) return {};
    return {KVRStringUtil::safeSubstr(pieces[1], 4, 1), KVRStringUtil::safeSubstr(pieces[1], 6, 1)};
}

std::optional<std::string> digitOrNone(const std::string& digit) {
    return digit.empty() ? std::nullopt : std::optional<std::string>(digit);
}

bool isPresent(const std::optional<std::string>& text) { return text && !text->empty(); }

// Transport failures that happen before a request leaves: nothing reached the
// acquirer, so nothing can have been approved.
bool neverLeft(const KVRError& error) {
    if (error.domain() != NSURLErrorDomain) return false;
    switch (error.code()) {
        case NSURLErrorBadURL:
        case NSURLErrorUnsupportedURL:
        case NSURLErrorCannotFindHost:
        case NSURLErrorCannotConnectToHost:
        case NSURLErrorNotConnectedToInternet:
        case NSURLErrorSecureConnectionFailed: return true;
        default: return false;
    }
}

// An approval the acquirer could not be asked to cancel is no approval to keep.
bool carriesIdentifiers(const KVRJournalEntry& entry) {
    return isPresent(entry.receiptTransactionKey) && isPresent(entry.hostReference) && isPresent(entry.authorisationCode);
}

// A sale's commands, whose card reads reload the stored tables when the PIN
// pad reports them out of date.
std::unique_ptr<KVRCommandController> newCommands() {
    auto commands = std::make_unique<KVRCommandController>();
    KVRTmsController::installTableReload(*commands);
    return commands;
}

}  // namespace

struct KVRTransactionController::ServiceCode {
    std::optional<std::string> first;  // chip or not
    std::optional<std::string> third;  // PIN or not

    explicit ServiceCode(const KVRGcrCommandResponse& gcr) {
        auto [firstDigit, thirdDigit] = serviceCodeDigits(gcr);
        first = digitOrNone(firstDigit);
        third = digitOrNone(thirdDigit);
    }
    bool isChipCard() const { return KVRCommandController::checkisEMV(first); }
    bool asksForPin() const { return !isChipCard() && KVRCommandController::checkisPINMandatory(third); }
};

/// One authorisation exchange: the request as sent and what came back.
struct KVRTransactionController::HostExchange {
    std::shared_ptr<KVRAcceptorAuthorisation> request;
    /// False when the journal could not keep the request, which then was not sent.
    bool journalled = false;
    std::optional<KVRError> error;
    std::optional<std::string> reply;
    std::shared_ptr<KVRAcceptorAuthorisationResponse> response;

    /// The host's decision, or none when the reply did not carry one (an
    /// empty body, an error page, another message).
    const KVRResponseToAuthorisationData* decision() const {
        if (!response || !response->data || !response->data->authorisationResponse) return nullptr;
        const auto& transactionResponse = response->data->authorisationResponse->transactionResponse;
        if (!transactionResponse || !transactionResponse->authorisationResult) return nullptr;
        const auto& decision = transactionResponse->authorisationResult->responseToAuthorisation;
        return decision ? &*decision : nullptr;
    }
    std::optional<std::string> iccData() const {
        const auto& transaction = response->data->authorisationResponse->transaction;
        if (!transaction || !transaction->transactionDetails) return std::nullopt;
        return std::optional<std::string>(transaction->transactionDetails->iccRelatedData);
    }
    const KVRAuthorisationResultData& result() const {
        return *response->data->authorisationResponse->transactionResponse->authorisationResult;
    }
    const KVRTransactionDataResponse* hostTransaction() const {
        const auto& transaction = response->data->authorisationResponse->transaction;
        return transaction ? &*transaction : nullptr;
    }
};

KVRTransactionController::KVRTransactionController() = default;
KVRTransactionController::~KVRTransactionController() = default;

// ---- The sale ----

int KVRTransactionController::sendTransaction(const std::shared_ptr<KVRTransactionModel>& transaction) {
    // A PIN pad without tables gets them and the sale starts over, for as long
    // as the PIN pad asks: a loop rather than recursion.
    for (;;) {
        if (auto result = runOnce(transaction)) return *result;
    }
}

std::optional<int> KVRTransactionController::runOnce(const std::shared_ptr<KVRTransactionModel>& transaction) {
    authorisationSent_ = false;
    try {
        if (!transaction->merchant()) transaction->setMerchant(KVRMerchantModel::findFirst());
        commands_ = newCommands();
        identifyPinpad(*transaction);
        auto gcr = commands_->sendCommandGcrWithTransactionType(transaction->getAccountType());
        return dispatchCardRead(transaction, gcr);
    } catch (const KVRLinkException& exception) {
        // The on-line part handles its own failures; what reaches here happened
        // before anything went to the acquirer, so there is nothing to undo.
        KVRLoggingUtil::printLog(std::string("The PIN pad stopped answering: ") + exception.what());
        return KVRTransactionStatusTimeout;
    } catch (const std::exception& exception) {
        KVRLoggingUtil::printLog(KVRStringUtil::format("%s", exception.what()));
        KVRLoggingUtil::printLog(KVRCallStack::describe());
        showChipMessage(kTransaction, "FALHOU");
        return KVRTransactionStatusFailure;
    }
}

void KVRTransactionController::identifyPinpad(KVRTransactionModel& transaction) {
    auto gin = commands_->sendCommandGin();
    auto pinpad = KVRPinpadModel::create();
    pinpad->setName(gin->name);
    pinpad->setModel(gin->model);
    pinpad->setSerialNumber(gin->serialNumber);
    // Each pass of the sale (a restart after a table load too) records the PIN
    // pad afresh; the record it replaces belongs to nothing any more.
    auto replaced = transaction.pinpad();
    transaction.setPinpad(pinpad);
    if (replaced) replaced->deleteRecord();
    auto key = transaction.initiatorTransactionKey();
    if (!key || key->empty()) {
        transaction.setInitiatorTransactionKey(generateInitiatorTransactionKeyWithSerialNumber(gin->serialNumber));
    }
}

std::optional<int> KVRTransactionController::dispatchCardRead(const std::shared_ptr<KVRTransactionModel>& transaction,
                                                              const std::shared_ptr<KVRGcrCommandResponse>& gcr) {
    if (!gcr) {
        showChipMessage(kTransaction, "INVALIDA");
        return KVRTransactionStatusInvalid;
    }
    if (gcr->status == KVRAbecsStatusTablesOutOfDate) {
        KVRTmsController().loadTmsTablesToPinpadWithBlock([](bool, std::optional<KVRError>) {});
        return std::nullopt;
    }
    if (gcr->status == KVRAbecsStatusNoApplication) {
        showChipMessage(kTransaction, "INVALIDA");
        return KVRTransactionStatusInvalid;
    }
    if (gcr->status != KVRAbecsStatusOk || gcr->responseId != "GCR") {
        if (gcr->status == KVRAbecsStatusCancelled) return KVRTransactionStatusAborted;
        showChipMessage(kTransaction, "FALHOU");
        return KVRTransactionStatusFailure;
    }
    if (gcr->cardType == kCardChip || gcr->cardType == kCardContactlessChip) return runChip(transaction, gcr);
    if (gcr->cardType == kCardStripe) return dispatchMagneticStripe(transaction, gcr);
    return KVRTransactionStatusUnknown;  // a kind of card read this sale does not handle
}

// ---- Chip ----

int KVRTransactionController::runChip(const std::shared_ptr<KVRTransactionModel>& transaction,
                                      const std::shared_ptr<KVRGcrCommandResponse>& gcr) {
    auto goc = commands_->sendCommandGocWithAmount(amountOf(*transaction));
    if (goc->status == KVRAbecsStatusCancelled) {
        showChipMessage(kTransaction, "CANCELADA");
        return KVRTransactionStatusAborted;
    }
    if (goc->status == KVRAbecsStatusTimeout) {
        showChipMessage("TEMPO", "EXPIROU");
        return KVRTransactionStatusTimeout;
    }
    if (goc->decision == kGocDeclinedOffline) {
        showChipMessage(kTransaction, "NEGADA");
        return KVRTransactionStatusDeclined;
    }
    // Decided by the card alone; the host never saw it.
    if (goc->decision != kGocGoOnline) return KVRTransactionStatusUnknown;
    try {
        return runChipOnline(transaction, *gcr, *goc);
    } catch (const std::exception& exception) {
        return recoverFromException(transaction, exception, true);
    }
}

int KVRTransactionController::runChipOnline(const std::shared_ptr<KVRTransactionModel>& transaction,
                                            const KVRGcrCommandResponse& gcr, const KVRGocCommandResponse& goc) {
    commands_->sendCommandDspWithMessage(kProcessing);
    HostExchange exchange = authorise(*transaction, gcr, &goc, nullptr);
    const KVRResponseToAuthorisationData* decision = exchange.decision();
    auto mapped = decision ? chipDecision(decision->responseCode) : std::nullopt;
    std::optional<std::string> iccData = decision ? exchange.iccData() : std::nullopt;
    if (!exchange.journalled || exchange.error || !mapped ||
        !acceptAnswer(*transaction, exchange, gcr, mapped->result, iccData)) {
        showChipMessage(kTransaction, "FALHOU");
        return KVRTransactionStatusFailure;
    }
    return finishChip(mapped->actionCode, mapped->result, iccData);
}

int KVRTransactionController::finishChip(const std::string& actionCode, int result,
                                         const std::optional<std::string>& iccData) {
    auto fnc = commands_->sendCommandFncWithActionCode(actionCode, iccData);
    if (fnc->status != KVRAbecsStatusOk) return KVRTransactionStatusDeclined;
    // The card's own verdict only changes the message: a card that refuses the
    // host's approval still ends as the host decided.
    switch (fnc->decision) {
        case kFncApproved: showChipMessage(kTransaction, "APROVADA"); break;
        case kFncDeclinedByCard: showChipMessage("TRANSACAO NEGADA", "PELO CARTAO"); break;
        case kFncDeclinedByNetwork: showChipMessage("TRANSACAO NEGADA", "PELA REDE"); break;
        default: return KVRTransactionStatusUnknown;
    }
    return result;
}

// ---- Magnetic stripe ----

int KVRTransactionController::dispatchMagneticStripe(const std::shared_ptr<KVRTransactionModel>& transaction,
                                                     const std::shared_ptr<KVRGcrCommandResponse>& gcr) {
    if (ServiceCode(*gcr).isChipCard()) {
        commands_->sendCommandDspWithMessage("Cartao de Chip");
        return KVRTransactionStatusInvalid;
    }
    return sendTransactionWithMagnectStripe(transaction, gcr);
}

int KVRTransactionController::sendTransactionWithMagnectStripe(const std::shared_ptr<KVRTransactionModel>& transaction,
                                                               const std::shared_ptr<KVRGcrCommandResponse>& gcr) {
    if (!commands_) {
        commands_ = newCommands();
        commands_->setGcrResponse(gcr);
    }
    authorisationSent_ = false;
    commands_->sendCommandDspWithMessage(kProcessing);
    ServiceCode serviceCode(*gcr);
    try {
        return runStripeOnline(transaction, *gcr, serviceCode);
    } catch (const std::exception& exception) {
        return recoverFromException(transaction, exception, false);
    }
}

int KVRTransactionController::runStripeOnline(const std::shared_ptr<KVRTransactionModel>& transaction,
                                              const KVRGcrCommandResponse& gcr, const ServiceCode& serviceCode) {
    std::shared_ptr<KVRGpnCommandResponse> gpn;
    if (serviceCode.asksForPin()) {
        gpn = commands_->sendCommandGpnWithAmount(amountOf(*transaction));
        // A cardholder who cancels the PIN entry, or lets it time out, has not
        // agreed to the payment: nothing goes to the acquirer.
        if (gpn->status == KVRAbecsStatusCancelled) {
            showStripeMessage(kStripeCancelled);
            return KVRTransactionStatusAborted;
        }
        if (gpn->status == KVRAbecsStatusTimeout) {
            showStripeMessage(kStripeTimeout);
            return KVRTransactionStatusTimeout;
        }
    }
    HostExchange exchange = authorise(*transaction, gcr, nullptr, gpn.get());
    if (!exchange.journalled) {
        showStripeMessage(kStripeFailed);
        return KVRTransactionStatusFailure;
    }
    if (exchange.error && exchange.error->domain() == NSURLErrorDomain &&
        exchange.error->code() == NSURLErrorTimedOut) {
        showStripeMessage(kStripeTimeout);
        return KVRTransactionStatusTimeout;
    }
    if (exchange.error) {
        KVRLoggingUtil::printLog("Error at sendTransaction: defaul case - " + exchange.error->description());
        showStripeMessage(kStripeFailed);
        return KVRTransactionStatusFailure;
    }
    const KVRResponseToAuthorisationData* decision = exchange.decision();
    bool approved = decision && (decision->responseCode == KVRResponseCodeAPPR || decision->responseCode == KVRResponseCodePART);
    std::optional<std::string> noIssuerData;  // a stripe sale tells the card nothing
    if (!decision ||
        !acceptAnswer(*transaction, exchange, gcr,
                      approved ? KVRTransactionStatusApproved : KVRTransactionStatusDeclined, noIssuerData)) {
        showStripeMessage(kStripeFailed);
        return KVRTransactionStatusFailure;
    }
    showStripeMessage(approved ? kStripeApproved : kStripeDeclined);
    return approved ? KVRTransactionStatusApproved : KVRTransactionStatusDeclined;
}

// ---- Host ----

KVRTransactionController::HostExchange KVRTransactionController::authorise(const KVRTransactionModel& transaction,
                                                                           const KVRGcrCommandResponse& gcr,
                                                                           const KVRGocCommandResponse* goc,
                                                                           const KVRGpnCommandResponse* gpn) {
    HostExchange exchange;
    exchange.request =
        KVRAuthorisationRequestFactory::createAcceptorAutorisationrequestWithTrasansaction(transaction, gcr, goc, gpn);
    std::string xml = exchange.request->write();
    // The request carries the card in clear: PAN and tracks stay out of logs unless asked for.
    KVRLoggingUtil::printLog(KVRCardDataMasking::xmlForLog(xml));
    exchange.journalled = journalAuthorisation(transaction, *exchange.request);
    if (!exchange.journalled) return exchange;
    authorisationSent_ = true;
    exchange.reply = KVRCommunicationController::postXml(xml, KVRServiceEndpoint::authorizerUrl(), &exchange.error);
    KVRLoggingUtil::printLog(KVRCardDataMasking::xmlForLog(exchange.reply.value_or("")));
    if (exchange.error && neverLeft(*exchange.error)) {
        journal_->state = KVRJournalEntry::kSettled;
        KVRJournal::update(*journal_);
    }
    if (exchange.error || !exchange.reply || exchange.reply->empty()) return exchange;
    exchange.response = std::make_shared<KVRAcceptorAuthorisationResponse>();
    exchange.response->read(*exchange.reply);
    return exchange;
}

void KVRTransactionController::fillTransaction(KVRTransactionModel& transaction,
                                               const KVRAcceptorAuthorisationResponse& response,
                                               const KVRGcrCommandResponse& gcr,
                                               const KVRAcceptorAuthorisation& request) {
    const auto& answer = *response.data->authorisationResponse;
    const auto& hostTransaction = answer.transaction;
    std::optional<std::string> iccData;
    if (hostTransaction && hostTransaction->transactionDetails) {
        iccData = hostTransaction->transactionDetails->iccRelatedData;
    }
    transaction.setAid(getTransactionAidWithGcrResponse(gcr));
    transaction.setArqc(iccData ? getArqcWithEmv(*iccData) : std::nullopt);
    transaction.setAuthorisationCode(
        std::optional<std::string>(answer.transactionResponse->authorisationResult->authorisationCode));
    transaction.setCardHolderName(gcr.cardHolderName);
    transaction.setDate(KVRClock::now());
    transaction.setCardBrand(getFlagWithGcrResponse(gcr));

    std::optional<std::string> pan;
    const auto& environment = request.authorisationRequest->environment;
    if (environment && environment->card && environment->card->plainCard && environment->card->plainCard->pan) {
        const std::string& full = *environment->card->plainCard->pan;
        pan = full.size() > 4 ? full.substr(full.size() - 4) : full;  // only the last digits are ever kept
    }
    transaction.setPan(pan);

    std::optional<std::string> receiptKey;
    std::optional<std::string> reference;
    if (hostTransaction) {
        receiptKey = hostTransaction->recipientTransactionId;
        if (hostTransaction->transactionId) reference = hostTransaction->transactionId->transactionReference;
    }
    transaction.setReceiptTransactionKey(receiptKey);
    transaction.setReference(reference);
}

// ---- Journal ----

bool KVRTransactionController::journalAuthorisation(const KVRTransactionModel& transaction,
                                                    const KVRAcceptorAuthorisation& request) {
    KVRJournalEntry entry;
    entry.kind = KVRJournalEntry::Kind::Authorisation;
    entry.state = KVRJournalEntry::kSent;
    entry.date = KVRClock::now();
    entry.initiatorTransactionKey = transaction.initiatorTransactionKey().value_or("");
    const auto& requestTransaction = request.authorisationRequest->transaction;
    if (requestTransaction && requestTransaction->transactionIdentification) {
        entry.reference = requestTransaction->transactionIdentification->transactionReference;
    }
    entry.amount = amountOf(transaction).description();
    if (auto merchant = transaction.merchant()) entry.merchantKey = merchant->saleAffiliationKey();
    entry.processIdentifier = KVRProcessInfo::currentIdentifier();
    entry.keyCount = keyCount_;
    if (!KVRJournal::append(entry)) {
        KVRLoggingUtil::printLog("The authorisation is not sent: the journal cannot keep it");
        return false;
    }
    KVRReversalController::hold(entry.identifier);
    journal_ = entry;
    return true;
}

void KVRTransactionController::noteAnswer(const HostExchange& exchange) {
    journal_->state = KVRJournalEntry::kAnswered;
    journal_->hostResponse = static_cast<int>(exchange.decision()->responseCode);
    journal_->authorisationCode = exchange.result().authorisationCode;
    if (auto hostTransaction = exchange.hostTransaction()) {
        journal_->receiptTransactionKey = hostTransaction->recipientTransactionId;
        if (hostTransaction->transactionId) journal_->hostReference = hostTransaction->transactionId->transactionReference;
    }
}

// The host's answer goes to the record, with the status it decided, and to
// the journal in one save. False when the sale cannot go on with it: an
// approval without the identifiers that could cancel it, with issuer data
// the card cannot be given, or that could not be saved. (Issuer data that
// cannot be given is dropped from a decline.)
bool KVRTransactionController::acceptAnswer(KVRTransactionModel& transaction, const HostExchange& exchange,
                                            const KVRGcrCommandResponse& gcr, int result,
                                            std::optional<std::string>& iccData) {
    noteAnswer(exchange);
    bool approved = journal_->hostApproved();
    bool issuerDataFits = !iccData || KVRFncCommandRequest::isValidIssuerData(*iccData);
    if (approved && (!carriesIdentifiers(*journal_) || !issuerDataFits)) {
        KVRLoggingUtil::printLog(issuerDataFits ? "The approval carries no identifiers; it is undone"
                                                : "The approval's issuer data cannot go to the card; it is undone");
        KVRJournal::update(*journal_);
        return false;
    }
    if (!issuerDataFits) iccData.reset();
    fillTransaction(transaction, *exchange.response, gcr, *exchange.request);
    transaction.setStatus(result);
    bool saved = KVRJournal::commit(&*journal_);
    auto receiptKey = transaction.receiptTransactionKey();
    KVRLoggingUtil::printLog(receiptKey ? "-----> " + *receiptKey : std::string("Não existe ARN !!"));
    return saved || !approved;
}

// ---- Failures of the on-line part ----

int KVRTransactionController::recoverFromException(const std::shared_ptr<KVRTransactionModel>& transaction,
                                                   const std::exception& exception, bool chipFlow) {
    KVRLoggingUtil::printLog(KVRStringUtil::format("%s", exception.what()));
    KVRLoggingUtil::printLog(KVRCallStack::describe());
    if (dynamic_cast<const KVRLinkException*>(&exception)) {
        // A PIN pad that fell silent cannot show anything. Before the request
        // went out there is nothing to undo; after it, the acquirer may hold
        // an authorisation the card never confirmed, so it is cancelled.
        return authorisationSent_ ? cancelAtHost(transaction) : KVRTransactionStatusTimeout;
    }
    int outcome = cancelAtHost(transaction);
    if (chipFlow) {
        showChipMessage(kTransaction, outcome == KVRTransactionStatusCancelled ? "CANCELADA" : "FALHOU");
    } else {
        showStripeMessage(outcome == KVRTransactionStatusCancelled ? kStripeCancelled : kStripeFailed);
    }
    return outcome;
}

int KVRTransactionController::cancelAtHost(const std::shared_ptr<KVRTransactionModel>& transaction) {
    if (journal_) {
        auto verdict = KVRReversalController::sendAdvice(*journal_, transaction);
        return verdict.outcome == KVRAdviceOutcome::Approved ? KVRTransactionStatusCancelled
                                                             : KVRTransactionStatusUnknown;
    }
    int outcome = KVRTransactionStatusUnknown;
    try {
        KVRCancellationController().sendCancellationWithTransaction(
            transaction, [&outcome](bool success, const std::optional<KVRError>&) {
                outcome = success ? KVRTransactionStatusCancelled : KVRTransactionStatusUnknown;
            });
    } catch (const std::exception& exception) {
        KVRLoggingUtil::printLog(std::string("The cancellation advice could not be sent: ") + exception.what());
    }
    return outcome;
}

// ---- Display ----

void KVRTransactionController::showChipMessage(const char* firstLine, const char* secondLine) {
    showWithoutFailing([&] { commands_->sendCommandRmcWithFirstLine(firstLine, secondLine); });
}

void KVRTransactionController::showStripeMessage(const char* message) {
    showWithoutFailing([&] { commands_->sendCommandDspWithMessage(message); });
}

// A message that cannot be shown does not change how the sale ended.
void KVRTransactionController::showWithoutFailing(const std::function<void()>& show) {
    if (!commands_) return;
    try {
        show();
    } catch (const std::exception& exception) {
        KVRLoggingUtil::printLog(std::string("The PIN pad did not show the message: ") + exception.what());
    }
}

// ---- Card and key helpers ----

std::optional<std::string> KVRTransactionController::generateInitiatorTransactionKeyWithSerialNumber(
    const std::string& serialNumber) {
    return KVRInitiatorTransactionKey::generate(serialNumber, keyCount_);
}

std::string KVRTransactionController::getFlagWithGcrResponse(const KVRGcrCommandResponse& gcrResponse) {
    return gcrResponse.recidx <= kLastVisaRecord ? "Visa" : "MasterCard";
}

std::optional<std::string> KVRTransactionController::getTransactionAidWithGcrResponse(
    const KVRGcrCommandResponse& gcrResponse) {
    auto tables = KVRTmsTableModel::findFirst();
    if (!tables) {
        KVRLoggingUtil::printLog("Error - TMS Table not downloaded.");
        return std::string();
    }
    // Only the card's application is wanted: the applications are read one by
    // one up to it, and no PIN pad record is built for any of them.
    std::optional<KVRError> error;
    TBXML xml(tables->aidTable().value_or(""), &error);
    if (error) return std::nullopt;
    for (const TBXMLElement* e = TBXML::childElementNamed("Aid", xml.rootXMLElement()); e;
         e = TBXML::nextSiblingNamed("Aid", e)) {
        KVRAid aid;
        aid.read(e);
        if (aid.Recidx && KVRStringUtil::leadingInteger(*aid.Recidx) == gcrResponse.recidx) return aid.ApplicationId;
    }
    return std::nullopt;
}

std::optional<std::string> KVRTransactionController::getArqcWithEmv(const std::string& emv) {
    auto elements = KVRBerTlv::read(emv);
    auto found = elements.find("9F26");
    if (found == elements.end()) return std::nullopt;
    return found->second;
}
