#pragma once

#include <memory>
#include <vector>

class KVRMerchantModel;

class KVRMerchantListProvider {
public:
    KVRMerchantListProvider() = delete;

    static std::vector<std::shared_ptr<KVRMerchantModel>> listMerchants();
};
