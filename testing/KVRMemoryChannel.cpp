#include "testing/KVRMemoryChannel.h"

#include <algorithm>

KVRMemoryChannel::KVRMemoryChannel(size_t capacity) : capacity_(capacity) {}

long KVRMemoryChannel::write(const uint8_t* bytes, size_t length) {
    std::lock_guard lock(mutex_);
    if (closed_) return -1;
    size_t room = capacity_ > bytes_.size() ? capacity_ - bytes_.size() : 0;
    size_t n = std::min(length, room);
    bytes_.insert(bytes_.end(), bytes, bytes + n);
    if (n > 0) changed_.notify_all();
    return static_cast<long>(n);
}

long KVRMemoryChannel::read(uint8_t* buffer, size_t maxLength) {
    std::lock_guard lock(mutex_);
    size_t n = std::min(maxLength, bytes_.size());
    std::copy_n(bytes_.begin(), n, buffer);
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(n));
    if (n > 0) changed_.notify_all();
    return static_cast<long>(n);
}

size_t KVRMemoryChannel::available() const {
    std::lock_guard lock(mutex_);
    return bytes_.size();
}

size_t KVRMemoryChannel::space() const {
    std::lock_guard lock(mutex_);
    return capacity_ > bytes_.size() ? capacity_ - bytes_.size() : 0;
}

bool KVRMemoryChannel::waitReadable(std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [this] { return !bytes_.empty() || closed_; });
}

bool KVRMemoryChannel::waitWritable(std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [this] { return closed_ || bytes_.size() < capacity_; });
}

void KVRMemoryChannel::closeWriting() {
    std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_all();
}

bool KVRMemoryChannel::atEnd() const {
    std::lock_guard lock(mutex_);
    return closed_ && bytes_.empty();
}

void KVRMemoryChannel::setCapacity(size_t capacity) {
    std::lock_guard lock(mutex_);
    capacity_ = capacity;
    changed_.notify_all();
}
