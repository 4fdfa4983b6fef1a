#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

/// Loads the stored EMV tables into the PIN pad. Posts "KVRTableLoadProgress"
/// (object: "n/total") after each record. Completes on the main queue.
class KOVRA_API KVRTableLoaderProvider {
public:
    KVRTableLoaderProvider() = delete;

    static void loadTables(KVRCompletion block);
};
