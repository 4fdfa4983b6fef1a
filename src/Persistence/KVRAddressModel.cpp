#include <kovra/KVRAddressModel.h>

#include <kovra/KVRMerchantModel.h>

#include "Persistence/KVREntityDescription.h"

const KVREntityDescription& KVRAddressModel::entity() {
    static const KVREntityDescription description(
        "KVRAddressModel",
        {{"city", KVRAttributeType::Text},
         {"complement", KVRAttributeType::Text},
         {"district", KVRAttributeType::Text},
         {"doorNumber", KVRAttributeType::Text},
         {"neighborhood", KVRAttributeType::Text},
         {"street", KVRAttributeType::Text},
         {"zipCode", KVRAttributeType::Text}},
        {{"merchant", &KVRMerchantModel::entity, "address", KVRRelationshipKind::ForeignKey}},
        [] { return std::shared_ptr<KVRManagedObject>(new KVRAddressModel()); });
    return description;
}

std::optional<std::string> KVRAddressModel::city() const { return textValue("city"); }
void KVRAddressModel::setCity(std::optional<std::string> value) { setTextValue("city", std::move(value)); }
std::optional<std::string> KVRAddressModel::complement() const { return textValue("complement"); }
void KVRAddressModel::setComplement(std::optional<std::string> value) { setTextValue("complement", std::move(value)); }
std::optional<std::string> KVRAddressModel::district() const { return textValue("district"); }
void KVRAddressModel::setDistrict(std::optional<std::string> value) { setTextValue("district", std::move(value)); }
std::optional<std::string> KVRAddressModel::doorNumber() const { return textValue("doorNumber"); }
void KVRAddressModel::setDoorNumber(std::optional<std::string> value) { setTextValue("doorNumber", std::move(value)); }
std::optional<std::string> KVRAddressModel::neighborhood() const { return textValue("neighborhood"); }
void KVRAddressModel::setNeighborhood(std::optional<std::string> value) { setTextValue("neighborhood", std::move(value)); }
std::optional<std::string> KVRAddressModel::street() const { return textValue("street"); }
void KVRAddressModel::setStreet(std::optional<std::string> value) { setTextValue("street", std::move(value)); }
std::optional<std::string> KVRAddressModel::zipCode() const { return textValue("zipCode"); }
void KVRAddressModel::setZipCode(std::optional<std::string> value) { setTextValue("zipCode", std::move(value)); }

std::shared_ptr<KVRMerchantModel> KVRAddressModel::merchant() const {
    return std::static_pointer_cast<KVRMerchantModel>(toOneValue("merchant"));
}

void KVRAddressModel::setMerchant(std::shared_ptr<KVRMerchantModel> value) { setToOneValue("merchant", std::move(value)); }
