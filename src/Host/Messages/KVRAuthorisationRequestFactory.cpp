#include "Host/Messages/KVRAuthorisationRequestFactory.h"

#include "Host/KVREnumParser.h"
#include "Pinpad/Commands/KVRGcrCommandResponse.h"
#include "Pinpad/Commands/KVRGocCommandResponse.h"
#include "Pinpad/Commands/KVRGpnCommandResponse.h"
#include "Utils/KVRClock.h"
#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"
#include "Utils/KVRUUID.h"

#include <kovra/KVRException.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTransactionModel.h>

#include <array>
#include <utility>

namespace {

constexpr const char* kDateTimeFormat = "yyyy-MM-dd'T'HH:mm:ss";
constexpr const char* kExpiryFormat = "yyyy-MM";

struct PinData {
    std::string pinBlock;
    std::string keySerialNumber;
    std::optional<std::string> emvData;
};

bool holdsMoreThanZeros(const std::optional<std::string>& text) {
    return text && !KVRStringUtil::removeAll(*text, '0').empty();
}

std::optional<std::string> slice(const std::optional<std::string>& text, size_t start, size_t length) {
    if (!text) return std::nullopt;
    return KVRStringUtil::safeSubstr(*text, start, length);
}

std::string trackText(int32_t length, const std::string& track) { return length > 0 ? track : std::string(); }

std::shared_ptr<KVRHeader> makeHeader() {
    auto header = std::make_shared<KVRHeader>();
    header->messageFunction = KVRMessageFunctionAUTQ;
    header->protocolVersion = "2.0";
    return header;
}

std::shared_ptr<KVRContextData> makeContext(const KVRGcrCommandResponse& gcr) {
    auto context = std::make_shared<KVRContextData>();
    context->paymentContext = std::make_shared<KVRPaymentContextData>();
    context->paymentContext->cardDataEntryMode = KVRAuthorisationRequestFactory::getCardType(gcr.cardType);
    context->saleContext = std::make_shared<KVRSaleContextData>();
    context->saleContext->saleId = "";  // the host wants the element even when there is no sale identifier
    return context;
}

std::shared_ptr<KVRCardData> makeCard(const KVRGcrCommandResponse& gcr) {
    const std::array<std::string, 3> tracks = {trackText(gcr.firstTrackLength, gcr.firstTrack),
                                               trackText(gcr.secondTrackLength, gcr.secondTrack),
                                               trackText(gcr.thirdTrackLength, gcr.thirdTrack)};
    auto plain = std::make_shared<KVRPlainCardData>();
    plain->pan = KVRStringUtil::split(tracks[1], "=").front();
    if (gcr.expirationDate) plain->expiryDate = KVRDateUtil::dateStringWithFormat(kExpiryFormat, *gcr.expirationDate);
    // Numbered by where each track came from, so a missing track 1 leaves a gap.
    for (size_t i = 0; i < tracks.size(); ++i) {
        if (!tracks[i].empty()) {
            plain->trackData.push_back(
                KVRAuthorisationRequestFactory::createTrackData(static_cast<int32_t>(i + 1), tracks[i]));
        }
    }
    auto card = std::make_shared<KVRCardData>();
    card->plainCard = plain;
    return card;
}

PinData pinData(const KVRGocCommandResponse* goc, const KVRGpnCommandResponse* gpn) {
    PinData data;
    if (goc) {
        data.pinBlock = goc->pinBlock;
        data.keySerialNumber = goc->keySerialNumber;
        data.emvData = goc->emvData;
    }
    if (gpn) {
        data.pinBlock = gpn->pinBlock;
        data.keySerialNumber = gpn->keySerialNumber;
    }
    return data;
}

std::shared_ptr<KVRMerchantData> makeMerchant(const KVRTransactionModel& transaction) {
    auto id = std::make_shared<KVRGenericIdentification>();
    if (auto merchant = transaction.merchant()) {
        if (auto key = merchant->saleAffiliationKey()) id->identification = KVRStringUtil::removeAll(*key, '-');
    }
    // The name the merchant gives the sale (at most 16 characters, checked when the sale is entered).
    id->shortName = transaction.shortName();
    id->initiatingPartyType = KVRInitiatingPartyOPOI;
    id->initiatingPartyIssuer = KVRInitiatingPartyMERC;
    auto merchantData = std::make_shared<KVRMerchantData>();
    merchantData->genericId = id;
    return merchantData;
}

KVRAccountType accountType(const KVRTransactionModel& transaction, const KVRGcrCommandResponse& gcr) {
    // A card that does not say which application was chosen follows the sale's credit or debit choice.
    if (gcr.appType == 0) return static_cast<KVRAccountType>(transaction.getAccountType());
    return KVRAuthorisationRequestFactory::getAccountType(gcr.appType);
}

std::shared_ptr<KVRTransactionIdentificationData> makeIdentification() {
    auto identification = std::make_shared<KVRTransactionIdentificationData>();
    identification->transactionDateTime = KVRDateUtil::dateStringWithFormat(kDateTimeFormat, KVRClock::now());
    identification->transactionReference = KVRStringUtil::toUpper(KVRStringUtil::removeAll(KVRUUID::uuidString(), '-'));
    return identification;
}

std::shared_ptr<KVRTransactionDataRequest> makeTransaction(const KVRTransactionModel& transaction,
                                                           KVRAccountType account,
                                                           const std::optional<std::string>& emvData) {
    auto details = std::make_shared<KVRTransactionDetailsData>();
    details->accountType = account;
    details->currency = KVRAuthorisationRequestFactory::currencyBrazilianReal;
    details->iccRelatedData = emvData;
    if (auto amount = transaction.amount()) details->totalAmount = amount->description();
    details->recurringTransaction = std::make_shared<KVRRecurringTransactionData>();
    details->recurringTransaction->instalmentType = static_cast<KVRInstalmentType>(transaction.instalmentType());
    details->recurringTransaction->totalNumberOfPayments = transaction.instalmentAmount();

    auto tx = std::make_shared<KVRTransactionDataRequest>();
    tx->initrTxId = transaction.initiatorTransactionKey();
    tx->transactionCapture = transaction.capture() == 0;
    tx->transactionDetails = details;
    tx->transactionIdentification = makeIdentification();
    return tx;
}

}  // namespace

std::shared_ptr<KVRAcceptorAuthorisation> KVRAuthorisationRequestFactory::createAcceptorAutorisationrequestWithTrasansaction(
    const KVRTransactionModel& transaction, const KVRGcrCommandResponse& gcrResponse,
    const KVRGocCommandResponse* gocResponse, const KVRGpnCommandResponse* gpnResponse) {
    auto request = std::make_shared<KVRAuthorisationRequestData>();
    request->context = makeContext(gcrResponse);

    auto environment = std::make_shared<KVREnviroment>();
    environment->card = makeCard(gcrResponse);
    environment->poi = std::make_shared<KVRPoiData>();
    environment->poi->systemName = systemName;
    PinData pin = pinData(gocResponse, gpnResponse);
    environment->cardholderIdentification = createCardholderIdentificationData(pin.pinBlock, pin.keySerialNumber);
    environment->merchant = makeMerchant(transaction);
    request->environment = environment;

    request->transaction = makeTransaction(transaction, accountType(transaction, gcrResponse), pin.emvData);

    auto authorisation = std::make_shared<KVRAcceptorAuthorisation>();
    authorisation->header = makeHeader();
    authorisation->authorisationRequest = request;
    return authorisation;
}

std::shared_ptr<KVRCardholderIdentificationData> KVRAuthorisationRequestFactory::createCardholderIdentificationData(
    const std::optional<std::string>& pinBlock, const std::optional<std::string>& keySerialNumber) {
    auto cardholder = std::make_shared<KVRCardholderIdentificationData>();
    cardholder->authentication = std::make_shared<KVRAuthenticationData>();
    if (holdsMoreThanZeros(pinBlock) || holdsMoreThanZeros(keySerialNumber)) {
        cardholder->authentication->authenticationMethod = KVRAuthenticationMethodNPIN;
        cardholder->authentication->cardholderOnLinePin = std::make_shared<KVRCardholderOnLinePinData>();
        cardholder->authentication->cardholderOnLinePin->encryptedPinBlock =
            createEncryptedPinBlockData(pinBlock, keySerialNumber);
    } else {
        cardholder->authentication->authenticationMethod = KVRAuthenticationMethodFPIN;
    }
    return cardholder;
}

std::shared_ptr<KVREncryptedPINBlockData> KVRAuthorisationRequestFactory::createEncryptedPinBlockData(
    const std::optional<std::string>& pinBlock, const std::optional<std::string>& keySerialNumber) {
    auto kek = std::make_shared<KVRKekData>();
    kek->encryptedKey = slice(keySerialNumber, 10, 10);
    kek->kekId = std::make_shared<KVRKekIdentificationData>();
    kek->kekId->derivationIdentification = slice(keySerialNumber, 0, 10);

    auto enveloped = std::make_shared<KVREnvelopedData>();
    enveloped->recipient = std::make_shared<KVRRecipientData>();
    enveloped->recipient->kek = kek;
    enveloped->encryptedContent = std::make_shared<KVREncryptedContentData>();
    enveloped->encryptedContent->encryptedData = pinBlock;

    auto block = std::make_shared<KVREncryptedPINBlockData>();
    block->contentType = KVRContentTypeECRP;
    block->envelopedData = enveloped;
    return block;
}

std::shared_ptr<KVRTrackData> KVRAuthorisationRequestFactory::createTrackData(int32_t trackNumber,
                                                                            const std::string& trackValue) {
    auto track = std::make_shared<KVRTrackData>();
    track->trackNumber = trackNumber;
    track->trackValue = trackValue;
    return track;
}

KVRPoiCardDataReading KVRAuthorisationRequestFactory::getCardType(int32_t cardType) {
    switch (cardType) {
        case 0: return KVRPoiCardDataReadingMGST;
        case 3: return KVRPoiCardDataReadingCICC;
        case 5: return KVRPoiCardDataReadingCTLS;
        case 6: return KVRPoiCardDataReadingECTL;
        default:
            throw KVRException(KVREnumParser::exceptionName, KVRStringUtil::format("CardType desconhecido %d.", cardType));
    }
}

KVRAccountType KVRAuthorisationRequestFactory::getAccountType(int32_t appType) {
    switch (appType) {
        case 1:
        case 3: return KVRAccountTypeCRDT;
        case 2:
        case 4: return KVRAccountTypeCHCK;
        default:
            throw KVRException(KVREnumParser::exceptionName, KVRStringUtil::format("AccountType desconhecido. %d", appType));
    }
}
