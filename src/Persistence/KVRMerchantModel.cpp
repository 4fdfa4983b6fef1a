#include <kovra/KVRMerchantModel.h>

#include <kovra/KVRAddressModel.h>
#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVREntityDescription.h"

const KVREntityDescription& KVRMerchantModel::entity() {
    static const KVREntityDescription description(
        "KVRMerchantModel",
        {{"documentNumber", KVRAttributeType::Text},
         {"merchantName", KVRAttributeType::Text},
         {"saleAffiliationKey", KVRAttributeType::Text},
         {"kovracode", KVRAttributeType::Text}},
        {{"address", &KVRAddressModel::entity, "merchant", KVRRelationshipKind::InverseToOne, KVRDeleteRule::Cascade},
         {"transactions", &KVRTransactionModel::entity, "merchant", KVRRelationshipKind::InverseToMany,
          KVRDeleteRule::Nullify}},
        [] { return std::shared_ptr<KVRManagedObject>(new KVRMerchantModel()); });
    return description;
}

std::optional<std::string> KVRMerchantModel::documentNumber() const { return textValue("documentNumber"); }
void KVRMerchantModel::setDocumentNumber(std::optional<std::string> value) { setTextValue("documentNumber", std::move(value)); }
std::optional<std::string> KVRMerchantModel::merchantName() const { return textValue("merchantName"); }
void KVRMerchantModel::setMerchantName(std::optional<std::string> value) { setTextValue("merchantName", std::move(value)); }
std::optional<std::string> KVRMerchantModel::saleAffiliationKey() const { return textValue("saleAffiliationKey"); }
void KVRMerchantModel::setSaleAffiliationKey(std::optional<std::string> value) {
    setTextValue("saleAffiliationKey", std::move(value));
}
std::optional<std::string> KVRMerchantModel::kovracode() const { return textValue("kovracode"); }
void KVRMerchantModel::setKovracode(std::optional<std::string> value) { setTextValue("kovracode", std::move(value)); }

std::shared_ptr<KVRAddressModel> KVRMerchantModel::address() const {
    return std::static_pointer_cast<KVRAddressModel>(toOneValue("address"));
}

void KVRMerchantModel::setAddress(std::shared_ptr<KVRAddressModel> value) { setToOneValue("address", std::move(value)); }

std::vector<std::shared_ptr<KVRTransactionModel>> KVRMerchantModel::transactions() const {
    std::vector<std::shared_ptr<KVRTransactionModel>> list;
    for (const auto& object : toManyValue("transactions")) list.push_back(std::static_pointer_cast<KVRTransactionModel>(object));
    return list;
}
