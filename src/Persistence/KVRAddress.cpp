#include <kovra/KVRAddress.h>

#include "Persistence/KVREntityDescription.h"

const KVREntityDescription& KVRAddress::entity() {
    static const KVREntityDescription description("KVRAddress", KVRAddressModel::entity(),
                                                  [] { return std::shared_ptr<KVRManagedObject>(new KVRAddress()); });
    return description;
}
