#pragma once

#include "Platform/KVRFileDescriptor.h"
#include "Platform/KVRInputStream.h"

#include <memory>

/// Input from a serial device, pseudo-terminal or socket in non-blocking mode.
class KVRFdInputStream : public KVRInputStream {
public:
    explicit KVRFdInputStream(std::shared_ptr<KVRFileDescriptor> descriptor);
    ~KVRFdInputStream() override;

    void close() override;
    bool hasBytesAvailable() override;
    bool waitForBytesAvailable(std::chrono::milliseconds timeout) override;
    long read(uint8_t* buffer, size_t maxLength) override;

private:
    /// Whether the peer is gone: hang-up on a terminal, EOF on a socket.
    bool peerGone(long readResult, int readErrno) const;

    std::shared_ptr<KVRFileDescriptor> descriptor_;
};
