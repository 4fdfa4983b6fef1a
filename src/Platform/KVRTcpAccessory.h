#pragma once

#include "Platform/KVRAccessory.h"

#include <memory>
#include <string>

/// A PIN pad (or its emulator) reached at tcp://host:port.
class KVRTcpAccessory : public KVRAccessory {
public:
    KVRTcpAccessory(std::string host, std::string port, std::vector<std::string> protocolStrings = {"abecs"});

    /// "tcp://host:port" or "tcp://[v6 address]:port"; null when malformed.
    static std::shared_ptr<KVRTcpAccessory> fromUrl(const std::string& url);

    const std::string& host() const { return host_; }
    const std::string& port() const { return port_; }

protected:
    Streams connectStreams(const std::string& protocol) override;

private:
    int connectSocket() const;

    std::string host_;
    std::string port_;
};
