#pragma once

#include "Platform/KVRAccessory.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// Lists the PIN pads the machine can reach. In order: the accessories the
/// application registered, then the devices named by "Kovra Pinpad" (device
/// paths, "path@speed" or tcp://host:port, separated by commas) or, when that
/// key is absent, the serial ports that look like PIN pads.
class KVRAccessoryManager {
public:
    static KVRAccessoryManager& sharedAccessoryManager();

    std::vector<std::shared_ptr<KVRAccessory>> connectedAccessories();

    /// Adds an accessory the library cannot find on its own (or a test's).
    void registerAccessory(std::shared_ptr<KVRAccessory> accessory);
    void unregisterAccessory(const std::shared_ptr<KVRAccessory>& accessory);
    void unregisterAllAccessories();

    /// The accessory one "Kovra Pinpad" entry names; null for an empty or malformed entry.
    static std::shared_ptr<KVRAccessory> accessoryForEntry(const std::string& entry);
    /// Whether an enumerated serial port is worth offering as a PIN pad.
    static bool looksLikePinpad(const std::string& path, const std::string& description);

private:
    KVRAccessoryManager() = default;
    static std::vector<std::shared_ptr<KVRAccessory>> configuredAccessories(const std::string& setting);
    static std::vector<std::shared_ptr<KVRAccessory>> enumeratedAccessories();

    std::mutex mutex_;
    std::vector<std::shared_ptr<KVRAccessory>> registered_;
};
