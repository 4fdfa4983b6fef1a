#pragma once

#include "Host/Messages/KVRGenericIdentification.h"
#include "Host/Messages/KVRHeader.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

class XMLWriter;

// The element classes of the acceptor cancellation advice. Same writing rules
// as the authorisation request: texts and nested elements only when set.

/// `TxId` of the advice: unlike the authorisation request, the reference
/// comes before the date-time.
class KVRCancelTransactionIdentificationData {
public:
    std::optional<std::string> transactionReference;  // TxRef
    std::optional<std::string> transactionDateTime;   // TxDtTm

    void write(XMLWriter& writer) const;
};

/// `TxDtls` of the advice.
class KVRCancelTransactionDetailsData {
public:
    int32_t currency = 0;                    // Ccy
    std::optional<std::string> totalAmount;  // TtlAmt

    void write(XMLWriter& writer) const;
};

/// `OrgnlTx`: the keys the authorisation exchange gave the sale being voided.
class KVROriginalTransactionData {
public:
    std::optional<std::string> recipientTransactionIdentification;  // RcptTxId
    std::optional<std::string> initrTxId;                           // InitrTxId

    void write(XMLWriter& writer) const;
};

/// `Tx` of the advice.
class KVRTransactionData {
public:
    std::shared_ptr<KVROriginalTransactionData> originalTransaction;
    std::shared_ptr<KVRCancelTransactionDetailsData> transactionDetails;
    std::shared_ptr<KVRCancelTransactionIdentificationData> transactionIndentification;

    void write(XMLWriter& writer) const;
};

/// `Mrchnt`: the merchant's identification, written under `Id`.
class KVRCancelMerchantData {
public:
    std::shared_ptr<KVRGenericIdentification> genericId;

    void write(XMLWriter& writer) const;
};

/// `Envt` of the advice.
class KVREnviromentData {
public:
    std::shared_ptr<KVRCancelMerchantData> merchant;

    void write(XMLWriter& writer) const;
};

/// `CxlAdvc`.
class KVRCancellationAdviceData {
public:
    std::shared_ptr<KVREnviromentData> enviroment;
    std::shared_ptr<KVRTransactionData> transaction;

    void write(XMLWriter& writer) const;
};

/// `AccptrCxlAdvc`: body first, header last, as the host expects.
class KVRAcceptorCancellationAdviceData {
public:
    std::shared_ptr<KVRCancellationAdviceData> cancellationAdviceData;
    std::shared_ptr<KVRHeader> header;

    void write(XMLWriter& writer) const;
};
