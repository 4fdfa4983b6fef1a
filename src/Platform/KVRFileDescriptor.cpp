#include "Platform/KVRFileDescriptor.h"

#include <cerrno>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

KVRFileDescriptor::KVRFileDescriptor(int fd) : fd_(fd) {
    struct stat st {};
    socket_ = fstat(fd_, &st) == 0 && S_ISSOCK(st.st_mode);
    terminal_ = isatty(fd_) == 1;
}

// The exclusive flag belongs to the terminal, not to this descriptor: it is
// lifted before closing, or a later open of the same line would be refused.
KVRFileDescriptor::~KVRFileDescriptor() {
    if (exclusive_) ioctl(fd_, TIOCNXCL);
    if (fd_ >= 0) ::close(fd_);
}

void KVRFileDescriptor::setExclusiveTerminal() {
    if (terminal_ && ioctl(fd_, TIOCEXCL) == 0) exclusive_ = true;
}

int KVRFileDescriptor::poll(short events, int timeoutMilliseconds) const {
    struct pollfd p {fd_, events, 0};
    int r;
    do {
        r = ::poll(&p, 1, timeoutMilliseconds);
    } while (r < 0 && errno == EINTR);
    if (r < 0) return -1;
    return r == 0 ? 0 : p.revents;
}
