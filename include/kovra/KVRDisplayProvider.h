#pragma once

#include <kovra/KVRCompletion.h>
#include <kovra/KVRExport.h>

#include <string>

/// Shows up to 32 characters (two 16-character lines) on the PIN pad.
class KOVRA_API KVRDisplayProvider {
public:
    KVRDisplayProvider() = delete;

    static void displayMessage(const std::string& message, KVRCompletion block);
};
