#pragma once

#include <kovra/KVRExport.h>
#include <kovra/KVRRecord.h>

#include <memory>
#include <optional>
#include <string>

class KVRMerchantModel;

/// A merchant's postal address.
class KOVRA_API KVRAddressModel : public KVRRecord<KVRAddressModel> {
public:
    static const KVREntityDescription& entity();

    std::optional<std::string> city() const;
    void setCity(std::optional<std::string> value);
    std::optional<std::string> complement() const;
    void setComplement(std::optional<std::string> value);
    std::optional<std::string> district() const;
    void setDistrict(std::optional<std::string> value);
    std::optional<std::string> doorNumber() const;
    void setDoorNumber(std::optional<std::string> value);
    std::optional<std::string> neighborhood() const;
    void setNeighborhood(std::optional<std::string> value);
    std::optional<std::string> street() const;
    void setStreet(std::optional<std::string> value);
    std::optional<std::string> zipCode() const;
    void setZipCode(std::optional<std::string> value);

    /// The merchant this address belongs to; an address belongs to at most one
    /// merchant and a merchant has at most one address.
    std::shared_ptr<KVRMerchantModel> merchant() const;
    void setMerchant(std::shared_ptr<KVRMerchantModel> value);

protected:
    KVRAddressModel() = default;
    explicit KVRAddressModel(const KVREntityDescription& entity) : KVRRecord(entity) {}
};
