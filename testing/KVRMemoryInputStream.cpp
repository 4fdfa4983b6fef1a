#include "testing/KVRMemoryInputStream.h"

KVRMemoryInputStream::KVRMemoryInputStream(std::shared_ptr<KVRMemoryChannel> channel)
    : channel_(std::move(channel)) {}

bool KVRMemoryInputStream::hasBytesAvailable() { return isOpen() && channel_->available() > 0; }

bool KVRMemoryInputStream::waitForBytesAvailable(std::chrono::milliseconds timeout) {
    if (!isOpen()) return false;
    bool ready = channel_->waitReadable(timeout);
    if (ready && channel_->atEnd()) setStatus(KVRStreamStatus::AtEnd);
    return ready;
}

long KVRMemoryInputStream::read(uint8_t* buffer, size_t maxLength) {
    if (!isOpen()) return -1;
    long n = channel_->read(buffer, maxLength);
    if (n == 0 && channel_->atEnd()) setStatus(KVRStreamStatus::AtEnd);
    return n;
}
