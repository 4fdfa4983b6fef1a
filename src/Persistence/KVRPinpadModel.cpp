#include <kovra/KVRPinpadModel.h>

#include <kovra/KVRTransactionModel.h>

#include "Persistence/KVREntityDescription.h"

const KVREntityDescription& KVRPinpadModel::entity() {
    static const KVREntityDescription description(
        "KVRPinpadModel",
        {{"name", KVRAttributeType::Text}, {"model", KVRAttributeType::Text}, {"serialNumber", KVRAttributeType::Text}},
        {{"transaction", &KVRTransactionModel::entity, "pinpad", KVRRelationshipKind::InverseToOne,
          KVRDeleteRule::Nullify}},
        [] { return std::shared_ptr<KVRManagedObject>(new KVRPinpadModel()); });
    return description;
}

std::optional<std::string> KVRPinpadModel::name() const { return textValue("name"); }
void KVRPinpadModel::setName(std::optional<std::string> value) { setTextValue("name", std::move(value)); }
std::optional<std::string> KVRPinpadModel::model() const { return textValue("model"); }
void KVRPinpadModel::setModel(std::optional<std::string> value) { setTextValue("model", std::move(value)); }
std::optional<std::string> KVRPinpadModel::serialNumber() const { return textValue("serialNumber"); }
void KVRPinpadModel::setSerialNumber(std::optional<std::string> value) { setTextValue("serialNumber", std::move(value)); }

std::shared_ptr<KVRTransactionModel> KVRPinpadModel::transaction() const {
    return std::static_pointer_cast<KVRTransactionModel>(toOneValue("transaction"));
}

void KVRPinpadModel::setTransaction(std::shared_ptr<KVRTransactionModel> value) {
    setToOneValue("transaction", std::move(value));
}
