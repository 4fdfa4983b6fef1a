#include "Platform/KVRFdOutputStream.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

KVRFdOutputStream::KVRFdOutputStream(std::shared_ptr<KVRFileDescriptor> descriptor)
    : descriptor_(std::move(descriptor)) {}

KVRFdOutputStream::~KVRFdOutputStream() = default;

void KVRFdOutputStream::close() {
    KVRStream::close();
    descriptor_.reset();
}

bool KVRFdOutputStream::hasSpaceAvailable() { return waitForSpaceAvailable(std::chrono::milliseconds(0)); }

bool KVRFdOutputStream::waitForSpaceAvailable(std::chrono::milliseconds timeout) {
    if (!isOpen() || !descriptor_) return false;
    int events = descriptor_->poll(POLLOUT, pollMilliseconds(timeout));
    return events > 0 && (events & POLLOUT);
}

long KVRFdOutputStream::write(const uint8_t* buffer, size_t length) {
    if (!isOpen() || !descriptor_) return -1;
    ssize_t n;
    do {
        // A peer that closed its socket must not raise SIGPIPE in the application.
        n = descriptor_->isSocket() ? ::send(descriptor_->fd(), buffer, length, MSG_NOSIGNAL)
                                    : ::write(descriptor_->fd(), buffer, length);
    } while (n < 0 && errno == EINTR);
    if (n >= 0) return static_cast<long>(n);
    if (errno == EAGAIN || errno == EWOULDBLOCK) return 0;
    return -1;
}
