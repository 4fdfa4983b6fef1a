#pragma once

#include "KVRSimTransport.h"

/// A TCP port on 127.0.0.1 serving one host at a time; when the host
/// disconnects, the next connection is accepted.
class KVRSimTcpTransport : public KVRSimTransport {
public:
    /// Port 0 lets the system choose a free port.
    explicit KVRSimTcpTransport(int port);
    ~KVRSimTcpTransport() override;

    std::string open() override;
    int waitDescriptor() const override { return client_ >= 0 ? client_ : listener_; }
    Received receive() override;
    void send(std::string_view bytes) override;
    std::optional<std::string> hangUp() override;
    void close() override;

private:
    void dropClient();

    int port_;
    int listener_ = -1;
    int client_ = -1;
};
