#pragma once

#include "Platform/KVRFileDescriptor.h"
#include "Platform/KVROutputStream.h"

#include <memory>

/// Output to a serial device, pseudo-terminal or socket in non-blocking mode.
class KVRFdOutputStream : public KVROutputStream {
public:
    explicit KVRFdOutputStream(std::shared_ptr<KVRFileDescriptor> descriptor);
    ~KVRFdOutputStream() override;

    void close() override;
    bool hasSpaceAvailable() override;
    bool waitForSpaceAvailable(std::chrono::milliseconds timeout) override;
    long write(const uint8_t* buffer, size_t length) override;

private:
    std::shared_ptr<KVRFileDescriptor> descriptor_;
};
