#include <kovra/KVRDisplayProvider.h>
#include <kovra/KVRErrors.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRQueues.h>
#include <kovra/KVRValidationProvider.h>

#include "Pinpad/KVRCommandController.h"
#include "Pinpad/KVRDisplayText.h"
#include "Utils/KVRStringUtil.h"

namespace {

// Two lines of 16; characters as the user counts them, not bytes.
constexpr size_t kDisplayCapacity = 32;

bool exceedsDisplay(const std::string& message) {
    return KVRDisplayText::characterCount(message) > kDisplayCapacity;
}

void show(const std::string& message, const KVRCompletion& block) {
    // Checked again here: this is where the text meets the PIN pad.
    if (exceedsDisplay(message)) {
        KVRQueues::deliverOnMain([block] { block(false, KVRErrors::numberOfCharactersExceeded()); });
        return;
    }
    try {
        KVRCommandController commands;
        commands.sendCommandDspWithMessage(message);
    } catch (const std::exception& e) {
        KVRLoggingUtil::console(KVRStringUtil::format("Display failed: %s", e.what()));
        KVRQueues::deliverOnMain([block] { block(false, KVRErrors::genericError()); });
        return;
    }
    // The PIN pad's return code is not examined: a display is best effort.
    KVRQueues::deliverOnMain([block] { block(true, std::nullopt); });
}

}  // namespace

void KVRDisplayProvider::displayMessage(const std::string& message, KVRCompletion block) {
    if (exceedsDisplay(message)) {
        block(false, KVRErrors::numberOfCharactersExceeded());
        return;
    }
    if (!KVRValidationProvider::validatePinpadConnection()) {
        block(false, KVRErrors::pinpadConnectionNotFound());
        return;
    }
    // The caller is not held: a background task waits while the main worker
    // talks to the PIN pad.
    KVRQueues::global(KVRQueuePriority::Background).async([message, block] {
        KVRQueues::main().sync([&] { show(message, block); });
    });
}
