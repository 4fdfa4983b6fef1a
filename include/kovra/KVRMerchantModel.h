#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRRecord.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

class KVRAddressModel;
class KVRTransactionModel;

/// The enrolled merchant. A merchant counts as enrolled while a merchant
/// record exists.
class KOVRA_API KVRMerchantModel : public KVRRecord<KVRMerchantModel> {
public:
    static const KVREntityDescription& entity();

    std::optional<std::string> documentNumber() const;
    void setDocumentNumber(std::optional<std::string> value);
    std::optional<std::string> merchantName() const;
    void setMerchantName(std::optional<std::string> value);
    std::optional<std::string> saleAffiliationKey() const;
    void setSaleAffiliationKey(std::optional<std::string> value);
    std::optional<std::string> kovracode() const;
    void setKovracode(std::optional<std::string> value);

    /// The merchant's address. Setting one takes it away from any other
    /// merchant; deleting the merchant deletes its address.
    std::shared_ptr<KVRAddressModel> address() const;
    void setAddress(std::shared_ptr<KVRAddressModel> value);
    /// The transactions whose merchant is this one (set from the transaction's
    /// side); deleting the merchant leaves them without a merchant.
    std::vector<std::shared_ptr<KVRTransactionModel>> transactions() const;

protected:
    KVRMerchantModel() = default;
};
