#include "Platform/KVRFileDescriptor.h"

#include <cerrno>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

KVRFileDescriptor::KVRFileDescriptor(int fd) : fd_(fd) {
    struct stat st {};
    socket_ = fstat(fd_, &st) == 0 && S_ISSOCK(st.st_mode);
    terminal_ = isatty(fd_) == 1;
}

KVRFileDescriptor::~KVRFileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
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
