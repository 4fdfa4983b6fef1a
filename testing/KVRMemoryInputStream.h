#pragma once

#include "Platform/KVRInputStream.h"
#include "testing/KVRMemoryChannel.h"

#include <memory>

/// Reads one in-memory channel.
class KVRMemoryInputStream : public KVRInputStream {
public:
    explicit KVRMemoryInputStream(std::shared_ptr<KVRMemoryChannel> channel);

    bool hasBytesAvailable() override;
    bool waitForBytesAvailable(std::chrono::milliseconds timeout) override;
    long read(uint8_t* buffer, size_t maxLength) override;

private:
    std::shared_ptr<KVRMemoryChannel> channel_;
};
