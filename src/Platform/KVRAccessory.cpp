#include "Platform/KVRAccessory.h"

#include <kovra/KVRLoggingUtil.h>

#include <algorithm>

KVRAccessory::KVRAccessory(std::string name, std::vector<std::string> protocolStrings)
    : name_(std::move(name)), protocolStrings_(std::move(protocolStrings)) {}

KVRAccessory::~KVRAccessory() = default;

bool KVRAccessory::supportsProtocol(const std::string& protocol) const {
    return std::find(protocolStrings_.begin(), protocolStrings_.end(), protocol) != protocolStrings_.end();
}

std::shared_ptr<KVRAccessorySession> KVRAccessory::openSession(const std::string& protocol) {
    if (!supportsProtocol(protocol)) {
        KVRLoggingUtil::printLog("accessory " + name_ + " does not speak " + protocol);
        return nullptr;
    }
    Streams streams = connectStreams(protocol);
    if (!streams.input || !streams.output) return nullptr;
    return std::make_shared<KVRAccessorySession>(protocol, std::move(streams.input), std::move(streams.output));
}
