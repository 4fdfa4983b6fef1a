#include <kovra/KVRMailProvider.h>

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRTransactionModel.h>
#include <kovra/KVRValidationProvider.h>

#include "Platform/KVRSettingsKeys.h"
#include "Transactions/KVRMailController.h"
#include "Transactions/KVRRecoveryScheduler.h"

namespace {

constexpr const char* kDefaultSupportMailbox = "suporte@kovra.com.br";

std::string supportMailbox() {
    auto mailbox = KVRApplicationInfo::stringForKey(KVRSettingsKeys::kSupportMailbox);
    return mailbox && !mailbox->empty() ? *mailbox : kDefaultSupportMailbox;
}

// Runs one mail exchange on a pool and reports on the main queue: success
// when the service answered, emailMessageError for anything else.
void sendInBackground(std::function<std::optional<nlohmann::json>(std::optional<KVRError>*)> send,
                      KVRCompletion block) {
    KVRRecoveryScheduler::libraryUsed();
    KVRQueues::global(KVRQueuePriority::Default).async([send = std::move(send), block = std::move(block)] {
        KVRRecoveryScheduler::runNow();
        std::optional<KVRError> error;
        bool sent = send(&error).has_value();
        if (!sent) {
            KVRLoggingUtil::printLog("MailProvider error: " +
                                     (error ? error->description() : std::string("no reply from the mail service")));
        }
        KVRQueues::deliverOnMain([block, sent] {
            if (sent) {
                block(true, std::nullopt);
            } else {
                block(false, KVRErrors::emailMessageError());
            }
        });
    });
}

}  // namespace

void KVRMailProvider::sendReceiptViaEmail(int receiptKind, const std::shared_ptr<KVRTransactionModel>& transaction,
                                          const std::string& destination, bool displayCompanyInformation,
                                          KVRCompletion block) {
    if (!KVRValidationProvider::validateConnectionToNetWork()) {
        block(false, KVRErrors::notConnectedToNetwork());
        return;
    }
    auto send = [receiptKind, transaction, destination,
                 displayCompanyInformation](std::optional<KVRError>* error) -> std::optional<nlohmann::json> {
        KVRMailController controller;
        if (transaction && receiptKind == kReceiptSale) {
            return controller.sendMailTransaction(*transaction, destination, displayCompanyInformation, error);
        }
        if (transaction && receiptKind == kReceiptCancellation) {
            return controller.sendMailCanceledTransaction(*transaction, destination, displayCompanyInformation, error);
        }
        *error = KVRErrors::emailMessageError();
        return std::nullopt;
    };
    sendInBackground(std::move(send), std::move(block));
}

void KVRMailProvider::sendEmailFeedback(const std::string& message, KVRCompletion block) {
    if (!KVRValidationProvider::validateConnectionToNetWork()) {
        block(false, KVRErrors::notConnectedToNetwork());
        return;
    }
    auto send = [message](std::optional<KVRError>* error) {
        return KVRMailController().sendMailDefault(message, supportMailbox(), KVRMailController::kFeedbackSubject,
                                                   error);
    };
    sendInBackground(std::move(send), std::move(block));
}
