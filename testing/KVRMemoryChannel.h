#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <limits>
#include <mutex>

/// One direction of an in-memory link: a thread-safe byte queue. The writer
/// may close it; the reader then drains what is left and sees the end.
class KVRMemoryChannel {
public:
    explicit KVRMemoryChannel(size_t capacity = std::numeric_limits<size_t>::max());

    /// The count accepted (limited by the free capacity), or -1 once closed.
    long write(const uint8_t* bytes, size_t length);
    /// Up to `maxLength` queued bytes; 0 when none.
    long read(uint8_t* buffer, size_t maxLength);
    size_t available() const;
    size_t space() const;
    /// True when bytes are queued or the channel is closed and drained.
    bool waitReadable(std::chrono::milliseconds timeout) const;
    bool waitWritable(std::chrono::milliseconds timeout) const;
    void closeWriting();
    /// Closed and nothing left to read.
    bool atEnd() const;
    void setCapacity(size_t capacity);

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::deque<uint8_t> bytes_;
    size_t capacity_;
    bool closed_ = false;
};
