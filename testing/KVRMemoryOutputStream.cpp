#include "testing/KVRMemoryOutputStream.h"

KVRMemoryOutputStream::KVRMemoryOutputStream(std::shared_ptr<KVRMemoryChannel> channel, bool closeEndsChannel)
    : channel_(std::move(channel)), closeEndsChannel_(closeEndsChannel) {}

void KVRMemoryOutputStream::close() {
    KVRStream::close();
    if (closeEndsChannel_) channel_->closeWriting();
}

bool KVRMemoryOutputStream::hasSpaceAvailable() { return isOpen() && channel_->space() > 0; }

bool KVRMemoryOutputStream::waitForSpaceAvailable(std::chrono::milliseconds timeout) {
    return isOpen() && channel_->waitWritable(timeout) && channel_->space() > 0;
}

long KVRMemoryOutputStream::write(const uint8_t* buffer, size_t length) {
    if (!isOpen()) return -1;
    return channel_->write(buffer, length);
}
