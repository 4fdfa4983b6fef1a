#pragma once

#include <kovra/KVRCompletion.h>

/// Downloads the enrolled merchant's EMV tables and stores them.
/// Completes on a high-priority pool.
class KVRTableDownloaderProvider {
public:
    KVRTableDownloaderProvider() = delete;

    static void downLoadTables(KVRCompletion block);
};
