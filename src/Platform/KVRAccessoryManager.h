#pragma once

#include "Platform/KVRAccessory.h"

#include <memory>
#include <string>
#include <vector>

/// Lists the PIN pads the machine can reach: the installed platform hooks'
/// accessories when they list them, else machineAccessories().
class KVRAccessoryManager {
public:
    static KVRAccessoryManager& sharedAccessoryManager();

    std::vector<std::shared_ptr<KVRAccessory>> connectedAccessories();

    /// The devices named by "Kovra Pinpad" (device paths, "path@speed" or
    /// tcp://host:port, separated by commas) or, when that key is absent, the
    /// serial ports that look like PIN pads.
    static std::vector<std::shared_ptr<KVRAccessory>> machineAccessories();

    /// The accessory one "Kovra Pinpad" entry names; null for an empty or malformed entry.
    static std::shared_ptr<KVRAccessory> accessoryForEntry(const std::string& entry);
    /// Whether an enumerated serial port is worth offering as a PIN pad.
    static bool looksLikePinpad(const std::string& path, const std::string& description);

private:
    KVRAccessoryManager() = default;
    static std::vector<std::shared_ptr<KVRAccessory>> configuredAccessories(const std::string& setting);
    static std::vector<std::shared_ptr<KVRAccessory>> enumeratedAccessories();
};
