#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

/// Connects to the first PIN pad the machine reports (after bringing the
/// legacy transaction database up to date). Completes on the caller's thread.
class KOVRA_API KVRPinPadConnectionProvider {
public:
    KVRPinPadConnectionProvider() = delete;

    static void connectToPinpad(KVRCompletion block);

    /// From any thread: aborts the PIN pad command in flight (a card read or
    /// PIN entry waiting for the cardholder, say). The PIN pad is sent CAN
    /// and the command ends as if the cardholder had cancelled it, so a sale
    /// ends with result 9. True when a command was in flight and was ended.
    static bool abortCurrentCommand();
};
