#include <kovra/KVRAddressModel.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRUserInfoProvider.h>

#include "Persistence/KVRRegisterFile.h"

namespace {

std::string describeAddress(const KVRAddressModel& address) {
    return address.street().value_or("") + " " + address.doorNumber().value_or("") + ", " +
           address.neighborhood().value_or("") + ", " + address.city().value_or("");
}

}  // namespace

KVRUserInfoProvider::KVRUserInfoProvider() {
    if (auto merchant = KVRMerchantModel::findFirst()) {
        afKey = merchant->saleAffiliationKey();
        store = merchant->merchantName();
        documentNumber = merchant->documentNumber();
        if (auto stored = merchant->address()) address = describeAddress(*stored);
        kovracode = merchant->kovracode();
        return;
    }
    // A merchant an earlier release kept only in register.plist: show it, and
    // enrol it so that the store knows it from now on.
    auto registered = KVRRegisterFile::load();
    afKey = registered.stringForKey("AfKey");
    store = registered.stringForKey("estabelecimento");
    documentNumber = registered.stringForKey("CNPJ");
    address = registered.stringForKey("Endereço");
    kovracode = registered.stringForKey("kovracode");
    if (kovracode && !kovracode->empty()) {
        KVRKovraCodeActivationProvider::activateKovraCode(*kovracode, [](bool, std::optional<KVRError>) {});
    }
}
