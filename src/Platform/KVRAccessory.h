#pragma once

#include "Platform/KVRAccessorySession.h"

#include <memory>
#include <string>
#include <vector>

/// A PIN pad the machine can reach, with the protocol strings it speaks.
/// Subclasses know how to reach it: a serial device, a TCP endpoint, memory.
class KVRAccessory {
public:
    virtual ~KVRAccessory();
    KVRAccessory(const KVRAccessory&) = delete;
    KVRAccessory& operator=(const KVRAccessory&) = delete;

    const std::string& name() const { return name_; }
    const std::vector<std::string>& protocolStrings() const { return protocolStrings_; }
    bool supportsProtocol(const std::string& protocol) const;

    /// A session with unopened streams, or null when the protocol is not one
    /// of the accessory's or the device cannot be reached (the reason is logged).
    std::shared_ptr<KVRAccessorySession> openSession(const std::string& protocol);

protected:
    KVRAccessory(std::string name, std::vector<std::string> protocolStrings);

    struct Streams {
        std::shared_ptr<KVRInputStream> input;
        std::shared_ptr<KVROutputStream> output;
    };
    /// Reaches the device; empty streams when it cannot.
    virtual Streams connectStreams(const std::string& protocol) = 0;

private:
    std::string name_;
    std::vector<std::string> protocolStrings_;
};
