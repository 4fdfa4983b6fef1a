#include <kovra/KVRMerchantListProvider.h>
#include <kovra/KVRMerchantModel.h>

std::vector<std::shared_ptr<KVRMerchantModel>> KVRMerchantListProvider::listMerchants() {
    return KVRMerchantModel::findAll();
}
