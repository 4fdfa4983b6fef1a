#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRAcceptorAuthorisation.h"
#include "Host/Messages/KVRAuthorisationRequestData.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class KVRTransactionModel;
class KVRGcrCommandResponse;
class KVRGocCommandResponse;
class KVRGpnCommandResponse;

/// Turns a sale and the PIN pad's replies into the authorisation request.
/// The card travels in clear; only the PIN block is carried enciphered, with
/// the PIN pad's DUKPT key serial number split over two identification fields.
class KVRAuthorisationRequestFactory {
public:
    static constexpr const char* systemName = "iOs";
    static constexpr int32_t currencyBrazilianReal = 986;

    KVRAuthorisationRequestFactory() = delete;

    /// `gocResponse` is null for a magnetic-stripe read, `gpnResponse` when no
    /// separate PIN entry was made; a GPN's PIN data wins over the GOC's.
    /// Throws KVRException for a card or application type the host has no
    /// code for (and for values outside the code sets when written).
    static std::shared_ptr<KVRAcceptorAuthorisation> createAcceptorAutorisationrequestWithTrasansaction(
        const KVRTransactionModel& transaction, const KVRGcrCommandResponse& gcrResponse,
        const KVRGocCommandResponse* gocResponse, const KVRGpnCommandResponse* gpnResponse);

    /// On-line PIN ("NPIN") when the PIN block or the key serial number holds
    /// anything but zeros, otherwise PIN verified off line ("FPIN") and no PIN element.
    static std::shared_ptr<KVRCardholderIdentificationData> createCardholderIdentificationData(
        const std::optional<std::string>& pinBlock, const std::optional<std::string>& keySerialNumber);
    /// The key serial number's first ten characters become `DerivtnId`, the
    /// next ten `NcrptdKey`: the host's convention for a 20-character KSN.
    static std::shared_ptr<KVREncryptedPINBlockData> createEncryptedPinBlockData(
        const std::optional<std::string>& pinBlock, const std::optional<std::string>& keySerialNumber);
    static std::shared_ptr<KVRTrackData> createTrackData(int32_t trackNumber, const std::string& trackValue);

    /// PIN pad card type to card entry mode: 0 stripe, 3 chip, 5 and 6 contactless.
    /// Throws "CardType desconhecido %d." for any other.
    static KVRPoiCardDataReading getCardType(int32_t cardType);
    /// PIN pad application type to account type: 1 and 3 credit, 2 and 4
    /// checking. Throws "AccountType desconhecido. %d" for any other.
    static KVRAccountType getAccountType(int32_t appType);
};
