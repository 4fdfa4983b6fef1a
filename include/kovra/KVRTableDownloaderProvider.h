#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

/// Downloads the enrolled merchant's EMV tables and stores them.
/// Completes on a high-priority pool.
class KOVRA_API KVRTableDownloaderProvider {
public:
    KVRTableDownloaderProvider() = delete;

    static void downLoadTables(KVRCompletion block);
};
