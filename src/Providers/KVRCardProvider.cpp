#include <kovra/KVRCardProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRValidationProvider.h>

#include "Pinpad/Commands/KVRAbecsStatus.h"
#include "Pinpad/KVRCommandController.h"
#include "Utils/KVRStringUtil.h"

namespace {

// Every application type, 0 to 4: any card will do.
constexpr int32_t kAnyApplication = 7;

std::string lastFourDigits(const std::string& pan) {
    return pan.size() > 4 ? pan.substr(pan.size() - 4) : pan;
}

void readCard(const KVRCardProvider::Completion& block) {
    std::shared_ptr<KVRGcrCommandResponse> reply;
    try {
        KVRCommandController commands;
        reply = commands.sendCommandGcrWithTransactionType(kAnyApplication);
    } catch (const std::exception& e) {
        KVRLoggingUtil::console(KVRStringUtil::format("Card read failed: %s", e.what()));
    }
    if (reply && reply->status == KVRAbecsStatusOk) {
        std::string digits = lastFourDigits(reply->pan);
        KVRQueues::deliverOnMain([block, digits] { block(true, digits, std::nullopt); });
    } else if (reply && reply->status == KVRAbecsStatusTablesOutOfDate) {
        KVRQueues::deliverOnMain([block] { block(false, std::nullopt, KVRErrors::tablesNotFound()); });
    } else {
        KVRQueues::deliverOnMain([block] { block(false, std::nullopt, KVRErrors::genericError()); });
    }
}

}  // namespace

void KVRCardProvider::getCardPan(Completion block) {
    if (!KVRValidationProvider::validatePinpadConnection()) {
        block(false, std::nullopt, KVRErrors::pinpadConnectionNotFound());
        return;
    }
    KVRQueues::global(KVRQueuePriority::Background).async([block] {
        KVRQueues::main().sync([&] { readCard(block); });
    });
}
