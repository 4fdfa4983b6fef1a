#include "KovraPinpadMessages.h"

#include "KovraOutput.h"


KovraPinpadMessages::KovraPinpadMessages(KovraOutput& output, std::string prefix) {
    token_ = KVRNotificationCenter::defaultCenter().addObserver(
        kNotification, [&output, prefix = std::move(prefix)](const KVRNotification& note) {
            if (const auto* text = std::any_cast<std::string>(&note.object)) output.pinpadMessage(prefix + *text);
        });
}

KovraPinpadMessages::~KovraPinpadMessages() { KVRNotificationCenter::defaultCenter().removeObserver(token_); }
