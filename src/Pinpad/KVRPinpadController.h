#pragma once

#include "Pinpad/KVRConnectionProtocol.h"

#include <memory>
#include <mutex>

class KVRAccessory;

/// Holds the one PIN pad link of the process and connects it to an accessory.
class KVRPinpadController {
public:
    static KVRPinpadController& sharedController();

    /// Connects to the first accessory the machine reports; with none, nothing is opened.
    void connectWithPaired();
    /// Connects to the given accessory.
    void connectWithBluetooth(const std::shared_ptr<KVRAccessory>& accessory);

    /// Thread-safe: ends the PIN pad command in flight as if the cardholder
    /// had cancelled it (return code 013). False when no command was in flight.
    bool abortCurrentCommand();

    std::shared_ptr<KVRConnectionProtocol> connection() const;
    void setConnection(std::shared_ptr<KVRConnectionProtocol> connection);

private:
    KVRPinpadController() = default;
    void useSharedLink();

    mutable std::mutex mutex_;
    std::shared_ptr<KVRConnectionProtocol> connection_;
};
