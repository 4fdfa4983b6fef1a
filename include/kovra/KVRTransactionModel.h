#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRRecord.h>

#include <memory>
#include <optional>
#include <string>

class KVRMerchantModel;
class KVRPinpadModel;

/// A stored sale. Amounts are integers in cents; type 0 is credit and 1 debit;
/// status 0 to 9 (see statusString).
class KOVRA_API KVRTransactionModel : public KVRRecord<KVRTransactionModel> {
public:
    static const KVREntityDescription& entity();

    std::optional<std::string> aid() const;
    void setAid(std::optional<std::string> value);
    std::optional<std::string> arqc() const;
    void setArqc(std::optional<std::string> value);
    std::optional<std::string> authorisationCode() const;
    void setAuthorisationCode(std::optional<std::string> value);
    std::optional<std::string> cardHolderName() const;
    void setCardHolderName(std::optional<std::string> value);
    std::optional<std::string> cardBrand() const;
    void setCardBrand(std::optional<std::string> value);
    std::optional<std::string> initiatorTransactionKey() const;
    void setInitiatorTransactionKey(std::optional<std::string> value);
    std::optional<std::string> pan() const;
    void setPan(std::optional<std::string> value);
    std::optional<std::string> receiptTransactionKey() const;
    void setReceiptTransactionKey(std::optional<std::string> value);
    std::optional<std::string> reference() const;
    void setReference(std::optional<std::string> value);
    std::optional<std::string> shortName() const;
    void setShortName(std::optional<std::string> value);

    std::optional<KVRNumber> amount() const;
    void setAmount(std::optional<KVRNumber> value);
    std::optional<TimePoint> date() const;
    void setDate(std::optional<TimePoint> value);

    std::optional<KVRNumber> rawType() const;
    void setRawType(std::optional<KVRNumber> value);
    std::optional<KVRNumber> rawInstalmentAmount() const;
    void setRawInstalmentAmount(std::optional<KVRNumber> value);
    std::optional<KVRNumber> rawInstalmentType() const;
    void setRawInstalmentType(std::optional<KVRNumber> value);
    std::optional<KVRNumber> rawStatus() const;
    void setRawStatus(std::optional<KVRNumber> value);
    std::optional<KVRNumber> rawCapture() const;
    void setRawCapture(std::optional<KVRNumber> value);

    // The raw numbers as integers (0 when unset).
    int type() const;
    void setType(int value);
    int instalmentAmount() const;
    void setInstalmentAmount(int value);
    int instalmentType() const;
    void setInstalmentType(int value);
    int status() const;
    void setStatus(int value);
    int capture() const;
    void setCapture(int value);

    /// "Crédito" for type 0, "Débito" for type 1, empty otherwise.
    std::string typeString() const;
    /// The status text of statuses 0 to 9, empty otherwise.
    std::string statusString() const;
    /// The date as "dd/MM/yyyy - HH:mm" in local time, empty without a date.
    std::string dateString() const;
    /// The account type the card read asks for: 3 for credit, 2 otherwise.
    int getAccountType() const;

    std::shared_ptr<KVRMerchantModel> merchant() const;
    void setMerchant(std::shared_ptr<KVRMerchantModel> value);
    /// One PIN pad record per transaction: giving this transaction a PIN pad
    /// takes it away from the transaction that had it.
    std::shared_ptr<KVRPinpadModel> pinpad() const;
    void setPinpad(std::shared_ptr<KVRPinpadModel> value);

protected:
    KVRTransactionModel() = default;
};
