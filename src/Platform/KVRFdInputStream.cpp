#include "Platform/KVRFdInputStream.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

KVRFdInputStream::KVRFdInputStream(std::shared_ptr<KVRFileDescriptor> descriptor)
    : descriptor_(std::move(descriptor)) {}

KVRFdInputStream::~KVRFdInputStream() = default;

void KVRFdInputStream::close() {
    KVRStream::close();
    descriptor_.reset();
}

bool KVRFdInputStream::hasBytesAvailable() {
    if (!isOpen() || !descriptor_) return false;
    int events = descriptor_->poll(POLLIN, 0);
    return events > 0 && (events & POLLIN);
}

bool KVRFdInputStream::waitForBytesAvailable(std::chrono::milliseconds timeout) {
    if (!isOpen() || !descriptor_) return false;
    int events = descriptor_->poll(POLLIN, pollMilliseconds(timeout));
    if (events <= 0) return false;
    if (!(events & POLLIN) && (events & (POLLHUP | POLLERR))) setStatus(KVRStreamStatus::AtEnd);
    return true;
}

long KVRFdInputStream::read(uint8_t* buffer, size_t maxLength) {
    if (!isOpen() || !descriptor_) return -1;
    ssize_t n;
    do {
        n = ::read(descriptor_->fd(), buffer, maxLength);
    } while (n < 0 && errno == EINTR);
    int readErrno = errno;
    if (n > 0) {
        setStatus(KVRStreamStatus::Open);
        return static_cast<long>(n);
    }
    if (peerGone(n, readErrno)) {
        setStatus(KVRStreamStatus::AtEnd);
        return 0;
    }
    if (n < 0 && readErrno != EAGAIN && readErrno != EWOULDBLOCK) return -1;
    return 0;
}

bool KVRFdInputStream::peerGone(long readResult, int readErrno) const {
    if (readResult < 0) return readErrno == EIO || readErrno == ECONNRESET;
    // A terminal in raw non-blocking mode also reads 0 when it is merely quiet.
    if (!descriptor_->isTerminal()) return true;
    int events = descriptor_->poll(POLLIN, 0);
    return events > 0 && (events & POLLHUP);
}
