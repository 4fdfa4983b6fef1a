#include "testing/KVRLoopbackPort.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

KVRLoopbackPort::KVRLoopbackPort(bool listening) : fd_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (fd_ < 0 || ::bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        (listening && ::listen(fd_, 4) != 0) ||
        ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        if (fd_ >= 0) ::close(fd_);
        throw std::runtime_error("cannot hold a loopback port");
    }
    port_ = ntohs(address.sin_port);
}

KVRLoopbackPort::~KVRLoopbackPort() { ::close(fd_); }

int KVRLoopbackPort::accept() { return ::accept(fd_, nullptr, nullptr); }
