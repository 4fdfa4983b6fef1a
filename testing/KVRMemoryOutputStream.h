#pragma once

#include "testing/KVRMemoryChannel.h"
#include "Platform/KVROutputStream.h"

#include <memory>

/// Writes one in-memory channel. Closing the stream ends the channel for its reader.
class KVRMemoryOutputStream : public KVROutputStream {
public:
    explicit KVRMemoryOutputStream(std::shared_ptr<KVRMemoryChannel> channel, bool closeEndsChannel = true);

    void close() override;
    bool hasSpaceAvailable() override;
    bool waitForSpaceAvailable(std::chrono::milliseconds timeout) override;
    long write(const uint8_t* buffer, size_t length) override;

private:
    std::shared_ptr<KVRMemoryChannel> channel_;
    bool closeEndsChannel_;
};
