#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

/// Connects to the first PIN pad the machine reports (after bringing the
/// legacy transaction database up to date). Completes on the caller's thread.
class KOVRA_API KVRPinPadConnectionProvider {
public:
    KVRPinPadConnectionProvider() = delete;

    static void connectToPinpad(KVRCompletion block);
};
