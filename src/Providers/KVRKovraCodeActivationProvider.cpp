#include <kovra/KVRErrors.h>
#include <kovra/KVRKovraCodeActivationProvider.h>
#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRValidationProvider.h>

#include "Providers/KVRActivationController.h"
#include "Transactions/KVRRecoveryScheduler.h"

namespace {

void complete(const KVRCompletion& block, bool success, std::optional<KVRError> error) {
    if (block) block(success, std::move(error));
}

std::shared_ptr<KVRMerchantParameter> merchantParameters(const KVRActivationController& controller) {
    const auto& reply = controller.authorisationResponse;
    if (!reply || !reply->data || !reply->data->acceptorConfiguration) return nullptr;
    const auto& dataSet = reply->data->acceptorConfiguration->dataSet;
    if (!dataSet || !dataSet->content) return nullptr;
    return dataSet->content->merchantParameters;
}

void storeMerchant(const std::string& kovraCode, const KVRActivationController& controller) {
    auto merchant = KVRMerchantModel::create();
    merchant->setKovracode(kovraCode);
    if (auto parameters = merchantParameters(controller)) {
        merchant->setSaleAffiliationKey(parameters->saleAffiliationKey);
        merchant->setMerchantName(parameters->companyName);
        merchant->setDocumentNumber(parameters->identificationCode);
        merchant->setAddress(parameters->address);
    }
    merchant->save();
}

void enrol(const std::string& kovraCode, const KVRCompletion& block) {
    KVRActivationController controller;
    controller.activativateWithKovraCode(kovraCode, [&](bool success, std::optional<KVRError> error) {
        if (!success) {
            complete(block, false, std::move(error));
            return;
        }
        storeMerchant(kovraCode, controller);
        complete(block, true, std::nullopt);
    });
}

}  // namespace

void KVRKovraCodeActivationProvider::activateKovraCode(const std::string& kovraCode, KVRCompletion block) {
    if (!KVRValidationProvider::validateConnectionToNetWork()) {
        complete(block, false, KVRErrors::notConnectedToNetwork());
        return;
    }
    // Only this exact code: a second, different code enrols a second merchant.
    if (KVRMerchantModel::findFirstByAttribute("kovracode", kovraCode)) {
        complete(block, false, KVRErrors::kovracodeAlreadyActivated());
        return;
    }
    KVRRecoveryScheduler::libraryUsed();
    KVRQueues::global(KVRQueuePriority::High).async([kovraCode, block = std::move(block)] {
        KVRRecoveryScheduler::runNow();
        enrol(kovraCode, block);
    });
}

void KVRKovraCodeActivationProvider::deactivateMerchant(const std::shared_ptr<KVRMerchantModel>& merchant) {
    if (merchant) merchant->deleteRecord();
}

void KVRKovraCodeActivationProvider::deactivateMerchantWithKovraCode(const std::string& kovraCode) {
    deactivateMerchant(KVRMerchantModel::findFirstByAttribute("kovracode", kovraCode));
}
