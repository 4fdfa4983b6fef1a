#pragma once

#include "Host/KVREnumTypes.h"
#include "Host/Messages/KVRGenericIdentification.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class XMLWriter;

// The element classes of the acceptor authorisation request. Each writes its
// own tag and then its children in the host's fixed order: texts and nested
// elements only when set (an empty text still gives `<Tag></Tag>`), codes and
// numbers always.

/// `TrckData`: one track image exactly as the PIN pad read it.
class KVRTrackData {
public:
    int32_t trackNumber = 0;                // TrckNb
    std::optional<std::string> trackValue;  // TrckVal

    void write(XMLWriter& writer) const;
};

/// `CardSctyCd`.
class KVRCardSecurityCodeData {
public:
    std::optional<std::string> cardSecurityCodeValue;  // CSCVal

    void write(XMLWriter& writer) const;
};

/// `PlainCardData`: the card in clear, as the acquirer expects it.
class KVRPlainCardData {
public:
    std::optional<std::string> expiryDate;          // XpryDt, "yyyy-MM"
    std::optional<std::string> pan;                 // PAN
    std::optional<std::string> cardSequenceNumber;  // CardSeqNb
    std::vector<std::shared_ptr<KVRTrackData>> trackData;
    std::shared_ptr<KVRCardSecurityCodeData> cardSecurityCode;

    void write(XMLWriter& writer) const;
};

/// `Card`.
class KVRCardData {
public:
    std::shared_ptr<KVRPlainCardData> plainCard;

    void write(XMLWriter& writer) const;
};

/// `KEKId`: the first half of the PIN pad's key serial number.
class KVRKekIdentificationData {
public:
    std::optional<std::string> derivationIdentification;  // DerivtnId

    void write(XMLWriter& writer) const;
};

/// `KEK`: the second half of the key serial number travels as the "key".
class KVRKekData {
public:
    std::optional<std::string> encryptedKey;  // NcrptdKey
    std::shared_ptr<KVRKekIdentificationData> kekId;

    void write(XMLWriter& writer) const;
};

/// `Rcpt`.
class KVRRecipientData {
public:
    std::shared_ptr<KVRKekData> kek;

    void write(XMLWriter& writer) const;
};

/// `NcrptdCntt`: the PIN block as the PIN pad enciphered it.
class KVREncryptedContentData {
public:
    std::optional<std::string> encryptedData;  // NcrptdData

    void write(XMLWriter& writer) const;
};

/// `EnvlpdData`.
class KVREnvelopedData {
public:
    std::shared_ptr<KVRRecipientData> recipient;
    std::shared_ptr<KVREncryptedContentData> encryptedContent;

    void write(XMLWriter& writer) const;
};

/// `NcrptdPINBlck`.
class KVREncryptedPINBlockData {
public:
    std::shared_ptr<KVREnvelopedData> envelopedData;
    KVRContentType contentType = KVRContentTypeDATA;  // CnttTp

    void write(XMLWriter& writer) const;
};

/// `CrdhldrOnLinePIN`.
class KVRCardholderOnLinePinData {
public:
    std::shared_ptr<KVREncryptedPINBlockData> encryptedPinBlock;

    void write(XMLWriter& writer) const;
};

/// `Authntcn`: how the cardholder was verified, with the PIN when it goes on line.
class KVRAuthenticationData {
public:
    std::shared_ptr<KVRCardholderOnLinePinData> cardholderOnLinePin;
    KVRAuthenticationMethod authenticationMethod = KVRAuthenticationMethodBYPS;  // AuthntcnMtd

    void write(XMLWriter& writer) const;
};

/// `Crdhldr`. The identification value and its type go together: both are
/// written only when a value is set.
class KVRCardholderIdentificationData {
public:
    std::shared_ptr<KVRAuthenticationData> authentication;
    std::optional<std::string> cardholderIdentification;  // CrdhldrIdVal
    KVRCardholderIdentificationType cardholderIdentificationType = KVRCardholderIdentificationPASS;  // CrdhldrIdTp

    void write(XMLWriter& writer) const;
};

/// `Mrchnt`: the merchant's identification, written under `Id`.
class KVRMerchantData {
public:
    std::shared_ptr<KVRGenericIdentification> genericId;

    void write(XMLWriter& writer) const;
};

/// `POI`.
class KVRPoiData {
public:
    std::optional<std::string> systemName;  // SysNm

    void write(XMLWriter& writer) const;
};

/// `Envt`.
class KVREnviroment {
public:
    std::shared_ptr<KVRMerchantData> merchant;
    std::shared_ptr<KVRCardData> card;
    std::shared_ptr<KVRCardholderIdentificationData> cardholderIdentification;
    std::shared_ptr<KVRPoiData> poi;

    void write(XMLWriter& writer) const;
};

/// `PmtCntxt`.
class KVRPaymentContextData {
public:
    KVRPoiCardDataReading cardDataEntryMode = KVRPoiCardDataReadingTAGC;  // CardDataNtryMd

    void write(XMLWriter& writer) const;
};

/// The sale context has no element of its own: the host expects `SaleId`
/// (and `SaleRefNb`) directly inside `Cntxt`.
class KVRSaleContextData {
public:
    std::optional<std::string> saleId;               // SaleId
    std::optional<std::string> saleReferenceNumber;  // SaleRefNb

    void write(XMLWriter& writer) const;
};

/// `Cntxt`.
class KVRContextData {
public:
    std::shared_ptr<KVRPaymentContextData> paymentContext;
    std::shared_ptr<KVRSaleContextData> saleContext;

    void write(XMLWriter& writer) const;
};

/// `TxId` of the request: date-time first, then the reference.
class KVRTransactionIdentificationData {
public:
    std::optional<std::string> transactionDateTime;   // TxDtTm
    std::optional<std::string> transactionReference;  // TxRef

    void write(XMLWriter& writer) const;
};

/// `RcrngTx`: the instalment plan.
class KVRRecurringTransactionData {
public:
    KVRInstalmentType instalmentType = KVRInstalmentTypeNONE;  // InstlmtTp
    int32_t totalNumberOfPayments = 0;                         // TtlNbOfPmts

    void write(XMLWriter& writer) const;
};

/// `Pdct`.
class KVRProductData {
public:
    std::optional<std::string> productCode;                  // PdctCd
    std::optional<std::string> unitOfMeasure;                // UnitOfMeasr
    int32_t productQuantity = 0;                             // PdctQty
    int32_t unitPrice = 0;                                   // UnitPric
    int32_t productAmount = 0;                               // PdctAmt
    std::optional<std::string> taxType;                      // TaxTp
    std::optional<std::string> additionalProductInformation; // AddtlPdctInf

    void write(XMLWriter& writer) const;
};

/// `TxDtls`.
class KVRTransactionDetailsData {
public:
    int32_t currency = 0;                    // Ccy
    std::optional<std::string> totalAmount;  // TtlAmt
    KVRAccountType accountType = KVRAccountTypeDFLT;  // AcctTp
    std::shared_ptr<KVRRecurringTransactionData> recurringTransaction;
    std::shared_ptr<KVRProductData> product;
    std::optional<std::string> iccRelatedData;  // ICCRltdData

    void write(XMLWriter& writer) const;
};

/// `Tx`.
class KVRTransactionDataRequest {
public:
    bool transactionCapture = false;                          // TxCaptr
    std::optional<std::string> merchantCategoryCode;          // MrchntCtgyCd
    std::shared_ptr<KVRTransactionIdentificationData> transactionIdentification;
    std::shared_ptr<KVRTransactionDetailsData> transactionDetails;
    std::optional<std::string> additionalTransactionData;     // AddtlTxData
    std::optional<std::string> initrTxId;                     // InitrTxId

    void write(XMLWriter& writer) const;
};

/// `AuthstnReq`.
class KVRAuthorisationRequestData {
public:
    std::shared_ptr<KVREnviroment> environment;
    std::shared_ptr<KVRContextData> context;
    std::shared_ptr<KVRTransactionDataRequest> transaction;

    void write(XMLWriter& writer) const;
};
