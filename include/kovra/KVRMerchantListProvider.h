#pragma once

#include <kovra/KVRExport.h>

#include <memory>
#include <vector>

class KVRMerchantModel;

class KOVRA_API KVRMerchantListProvider {
public:
    KVRMerchantListProvider() = delete;

    static std::vector<std::shared_ptr<KVRMerchantModel>> listMerchants();
};
