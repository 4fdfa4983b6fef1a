#pragma once

#include "Platform/KVRStream.h"

#include <chrono>
#include <cstddef>
#include <cstdint>

/// The bytes an accessory sends. Once the peer is gone the status turns
/// AtEnd; bytes that arrive later (a device that comes back) turn it Open again.
class KVRInputStream : public KVRStream {
public:
    /// Bytes can be read without waiting.
    virtual bool hasBytesAvailable() = 0;
    /// Waits until bytes can be read or the stream reached its end; false when the time ran out.
    virtual bool waitForBytesAvailable(std::chrono::milliseconds timeout) = 0;
    /// Up to `maxLength` bytes: the count; 0 when nothing is waiting or at the
    /// end (see streamStatus); -1 on an error or when the stream is not open.
    virtual long read(uint8_t* buffer, size_t maxLength) = 0;
};
