#include "Pinpad/KVRCommandController.h"

#include <kovra/KVRException.h>
#include <kovra/KVRLoggingUtil.h>

#include "Pinpad/Commands/KVRAbecsStatus.h"
#include "Pinpad/Commands/KVRCloCommandRequest.h"
#include "Pinpad/Commands/KVRDspCommandRequest.h"
#include "Pinpad/Commands/KVRDspCommandResponse.h"
#include "Pinpad/Commands/KVRFncCommandRequest.h"
#include "Pinpad/Commands/KVRGcrCommandRequest.h"
#include "Pinpad/Commands/KVRGinCommandRequest.h"
#include "Pinpad/Commands/KVRGocCommandRequest.h"
#include "Pinpad/Commands/KVROpnCommandRequest.h"
#include "Pinpad/Commands/KVRRmcCommandRequest.h"
#include "Pinpad/Commands/KVRRmcCommandResponse.h"
#include "Pinpad/Commands/KVRTleCommandRequest.h"
#include "Pinpad/Commands/KVRTliCommandRequest.h"
#include "Pinpad/Commands/KVRTlrCommandRequest.h"
#include "Pinpad/KVRConnectionProtocol.h"
#include "Pinpad/KVRDisplayText.h"
#include "Pinpad/KVRLinkException.h"
#include "Pinpad/KVRPinpadController.h"
#include "Utils/KVRCardDataMasking.h"
#include "Utils/KVRClock.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

namespace {

// 0 ends the card read with a card; 13 ends it without trying another application type.
bool isFinalCardRead(const KVRGcrCommandResponse& reply) {
    return reply.status == KVRAbecsStatusOk || reply.status == KVRAbecsStatusCancelled;
}

// A display line of exactly 16 characters: cut, or filled with spaces.
std::string displayLine(const char* text) {
    std::string line = text ? KVRDisplayText::pinpadCharacters(text) : std::string();
    line.resize(KVRCommandController::kDisplayLineWidth, ' ');
    return line;
}

std::optional<std::string> piece(const std::string& text, size_t start, size_t length) {
    if (text.size() < start + length) return std::nullopt;
    return text.substr(start, length);
}

std::optional<std::string> digitOf(const std::optional<std::string>& code, size_t index) {
    if (!code) return std::nullopt;
    return piece(*code, index, 1);
}

}  // namespace

KVRCommandController::KVRCommandController() : pinpadController_(&KVRPinpadController::sharedController()) {}

// Without a link there is nobody to wait for: a caller that skipped the
// connection check hears it at once instead of blocking for ever.
std::shared_ptr<KVRConnectionProtocol> KVRCommandController::link() const {
    auto connection = pinpadController_ ? pinpadController_->connection() : nullptr;
    if (!connection) throw KVRLinkException::notConnected();
    return connection;
}

template <class Response>
std::shared_ptr<Response> KVRCommandController::exchange(KVRBaseCommandRequest& request) {
    auto connection = link();
    connection->sendRequest(request);
    return std::make_shared<Response>(connection->readMessage());
}

std::shared_ptr<KVROpnCommandResponse> KVRCommandController::sendCommandOpn() {
    KVROpnCommandRequest request;
    return exchange<KVROpnCommandResponse>(request);
}

void KVRCommandController::sendCommandDspWithMessage(const std::string& message) {
    KVRDspCommandRequest request;
    request.message = KVRDisplayText::pinpadCharacters(KVRDisplayText::literalFromFormat(message));
    // The reply is read only so that the next command follows the PIN pad's answer.
    exchange<KVRDspCommandResponse>(request);
}

void KVRCommandController::sendTwoLines(KVRBaseCommandRequest& request, std::string& message, const char* firstLine,
                                        const char* secondLine) {
    message = displayLine(firstLine) + displayLine(secondLine);
    exchange<KVRBaseCommandResponse>(request);
}

void KVRCommandController::sendCommandRmcWithFirstLine(const char* firstLine, const char* secondLine) {
    KVRRmcCommandRequest request;
    sendTwoLines(request, request.message, firstLine, secondLine);
}

void KVRCommandController::sendCommandCloWithFirstLine(const char* firstLine, const char* secondLine) {
    KVRCloCommandRequest request;
    sendTwoLines(request, request.message, firstLine, secondLine);
}

std::shared_ptr<KVRGinCommandResponse> KVRCommandController::sendCommandGin() {
    KVRGinCommandRequest request;
    request.acqidx = 0;
    auto connection = link();
    connection->sendRequest(request);
    const char* reply = connection->readMessage();
    KVRLoggingUtil::console(KVRStringUtil::format("Return %s", KVRCardDataMasking::pinpadReplyForLog(reply).c_str()));
    ginResponse_ = std::make_shared<KVRGinCommandResponse>(reply);
    return ginResponse_;
}

// ---- Card read ----

std::shared_ptr<KVRGcrCommandResponse> KVRCommandController::sendCommandGcrWithTransactionType(int32_t type) {
    switch (type) {
        case 2: return readCardWithChoices(2, 4);
        case 3: return readCardWithChoices(1, 3);
        case 7: return readCardSweepingApplicationTypes();
        default: return nullptr;
    }
}

std::shared_ptr<KVRGcrCommandResponse> KVRCommandController::readCard(int32_t applicationType) {
    KVRGcrCommandRequest request;
    request.acqidxreq = kAcquirerIndex;
    request.apptypreq = applicationType;
    request.amount = 0;
    request.tabver = kTableVersion;
    gcrResponse_ = exchange<KVRGcrCommandResponse>(request);
    return gcrResponse_;
}

// Tables out of date are reloaded and the card read again, for as long as the
// PIN pad keeps asking for it: a loop, so a stubborn PIN pad cannot exhaust
// the stack.
std::shared_ptr<KVRGcrCommandResponse> KVRCommandController::readCardWithChoices(int32_t first, int32_t second) {
    for (;;) {
        auto reply = readCard(first);
        if (isFinalCardRead(*reply)) return reply;
        if (checkTableError(*reply)) continue;
        return readCard(second);
    }
}

std::shared_ptr<KVRGcrCommandResponse> KVRCommandController::readCardSweepingApplicationTypes() {
    std::shared_ptr<KVRGcrCommandResponse> reply;
    for (int32_t applicationType = 0; applicationType <= 4; ++applicationType) {
        reply = readCard(applicationType);
        if (isFinalCardRead(*reply)) break;
    }
    return reply;
}

bool KVRCommandController::checkTableError(const KVRBaseCommandResponse& response) {
    if (response.status != KVRAbecsStatusTablesOutOfDate) return false;
    if (tableReload_) tableReload_();
    return true;
}

// ---- PIN entry ----

void KVRCommandController::resetCardVariables() {
    pan.reset();
    blockPan.clear();
    cardExpiration.reset();
    serviceCode.reset();
    scDigit6.reset();
    scDigit2.reset();
    dateString.reset();
}

// Track 2 is "PAN=YYMMSSS...": expiry and service code follow the separator.
// A track too short for them leaves them unknown rather than reading past it.
void KVRCommandController::takeCardVariables(const KVRGcrCommandResponse& card) {
    pan = card.secondTrack;
    blockPan = KVRStringUtil::split(*pan, "=");
    if (blockPan.size() >= 2) {
        cardExpiration = piece(blockPan[1], 0, 4);
        serviceCode = piece(blockPan[1], 4, 3);
    } else {
        cardExpiration.reset();
        serviceCode.reset();
    }
}

std::string KVRCommandController::appendStringPaddingLeft(const std::string& text) {
    long padCount = kAmountWidth - static_cast<long>(KVRDisplayText::characterCount(text));
    if (padCount > kAmountWidth || padCount < 0)
        throw KVRException("String doesn't fit", "String has a length of  while the limit is");
    return std::string(static_cast<size_t>(padCount), ' ') + text;
}

std::string KVRCommandController::pinEntryMessage(const KVRNumber& amount) {
    return "VALOR:" + appendStringPaddingLeft(amount.description()) + "SENHA:";
}

std::shared_ptr<KVRGpnCommandResponse> KVRCommandController::sendCommandGpnWithAmount(const KVRNumber& amount) {
    gpnRequest_ = std::make_shared<KVRGpnCommandRequest>();
    std::string message = pinEntryMessage(amount);
    if (gcrResponse_) takeCardVariables(*gcrResponse_);
    // From whatever card the process saw last, when this read gave none.
    scDigit6 = digitOf(serviceCode, 0);
    scDigit2 = digitOf(serviceCode, 2);
    if (cardExpiration)
        dateString = KVRDateUtil::buildDateWithString(*cardExpiration, "yyMM").value_or(KVRClock::now());

    if (!blockPan.empty()) {
        sendCommandDspWithMessage(kWaitMessage);
        gpnRequest_->method = kPinMethod;
        gpnRequest_->keydix = kPinKeyIndex;
        gpnRequest_->wkenc = kWorkingKey;
        gpnRequest_->pan = blockPan[0];
        gpnRequest_->minimum = kPinMinimumLength;
        gpnRequest_->maximum = kPinMaximumLength;
        // A chip card's PIN goes through chip processing; a stripe card's
        // service code says whether it wants one.
        if (!checkisEMV(scDigit6) && checkisPINMandatory(scDigit2))
            gpnRequest_->message = KVRDisplayText::pinpadCharacters(message);
    }
    return exchange<KVRGpnCommandResponse>(*gpnRequest_);
}

bool KVRCommandController::checkisEMV(const std::optional<std::string>& digit) {
    if (!digit) return false;
    long long value = KVRStringUtil::leadingInteger(*digit);
    return value == 2 || value == 6;
}

bool KVRCommandController::checkisPINMandatory(const std::optional<std::string>& digit) {
    long long value = digit ? KVRStringUtil::leadingInteger(*digit) : 0;
    return value == 0 || value == 3 || value == 5 || value == 6 || value == 7;
}

// ---- Chip processing ----

std::shared_ptr<KVRGocCommandResponse> KVRCommandController::sendCommandGocWithAmount(const KVRNumber& amount) {
    KVRGocCommandRequest request;
    request.acqidx = kAcquirerIndex;
    request.cashback = 0;
    request.connect = true;
    request.exclist = false;
    request.flrlimit = 0;
    request.keydix = kPinKeyIndex;
    request.method = kPinMethod;
    request.mtpbrs = 0;
    request.riskman = 0;
    request.tags1 = kEmvTags;
    request.tpbrs = 0;
    request.tvbrs = 0;
    request.wkenc = kWorkingKey;
    request.amount = amount.longLongValue();
    return exchange<KVRGocCommandResponse>(request);
}

std::shared_ptr<KVRFncCommandResponse> KVRCommandController::sendCommandFncWithActionCode(
    const std::string& actionCode, const std::optional<std::string>& emv) {
    KVRFncCommandRequest request;
    request.issuerDataEmv = emv.value_or("");
    request.authorizationResponseCode = actionCode;
    request.tags = kEmvTags;
    request.communicationStatus = 0;
    return exchange<KVRFncCommandResponse>(request);
}

// ---- Table load ----

std::shared_ptr<KVRTliCommandResponse> KVRCommandController::sendCommandTli() {
    KVRTliCommandRequest request;
    request.acqidxreq = kTableLoadAcquirerIndex;
    request.tabver = kTableVersion;
    return exchange<KVRTliCommandResponse>(request);
}

std::shared_ptr<KVRTlrCommandResponse> KVRCommandController::sendCommandTlrWithAid(
    std::shared_ptr<const KVRTableRecordCommand> aid) {
    KVRTlrCommandRequest request;
    request.aidCommand = std::move(aid);
    return exchange<KVRTlrCommandResponse>(request);
}

std::shared_ptr<KVRTlrCommandResponse> KVRCommandController::sendCommandTlrWithCapk(
    std::shared_ptr<const KVRTableRecordCommand> capk) {
    KVRTlrCommandRequest request;
    request.capkCommand = std::move(capk);
    return exchange<KVRTlrCommandResponse>(request);
}

std::shared_ptr<KVRTleCommandResponse> KVRCommandController::sendCommandTle() {
    KVRTleCommandRequest request;
    return exchange<KVRTleCommandResponse>(request);
}
