#pragma once

#include <kovra/KVRExport.h>

/// The precondition checks every provider uses.
class KOVRA_API KVRValidationProvider {
public:
    KVRValidationProvider() = delete;

    /// "register.plist" in the Documents directory names a KovraCode, or a
    /// merchant is stored.
    static bool validateActivation();
    /// The shared PIN pad link has a session.
    static bool validatePinpadConnection();
    /// EMV tables are stored.
    static bool validateTablesDownloaded();
    /// The probe host ("Kovra Reachability Host", else the authorisation host)
    /// is reachable over a local or a cellular link.
    static bool validateConnectionToNetWork();
};
