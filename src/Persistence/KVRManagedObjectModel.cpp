#include "Persistence/KVRManagedObjectModel.h"

#include <kovra/KVRAddress.h>
#include <kovra/KVRAddressModel.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRPinpadModel.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRTransactionModel.h>

KVRManagedObjectModel::KVRManagedObjectModel()
    : name_("KovraSDK"),
      entities_{&KVRMerchantModel::entity(), &KVRAddressModel::entity(), &KVRAddress::entity(),
                &KVRPinpadModel::entity(), &KVRTmsTableModel::entity(), &KVRTransactionModel::entity()} {}

const KVRManagedObjectModel& KVRManagedObjectModel::sharedModel() {
    static const auto* model = new KVRManagedObjectModel();
    return *model;
}

std::vector<const KVREntityDescription*> KVRManagedObjectModel::rootEntities() const {
    std::vector<const KVREntityDescription*> roots;
    for (const auto* entity : entities_) {
        if (&entity->root() == entity) roots.push_back(entity);
    }
    return roots;
}

const KVREntityDescription* KVRManagedObjectModel::entityNamed(const std::string& name) const {
    for (const auto* entity : entities_) {
        if (entity->name() == name) return entity;
    }
    return nullptr;
}

std::vector<const KVREntityDescription*> KVRManagedObjectModel::entitiesKindOf(const KVREntityDescription& entity) const {
    std::vector<const KVREntityDescription*> kinds;
    for (const auto* candidate : entities_) {
        if (candidate->isKindOf(entity)) kinds.push_back(candidate);
    }
    return kinds;
}
