#pragma once

#include "Platform/KVRStream.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

/// The bytes sent to an accessory.
class KVROutputStream : public KVRStream {
public:
    /// A write would accept at least one byte now.
    virtual bool hasSpaceAvailable() = 0;
    virtual bool waitForSpaceAvailable(std::chrono::milliseconds timeout) = 0;
    /// Writes up to `length` bytes: the count accepted (0 when the stream is
    /// full), or -1 on an error or when the stream is not open.
    virtual long write(const uint8_t* buffer, size_t length) = 0;
};
