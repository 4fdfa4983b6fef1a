#include "KVRSimTcpTransport.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

KVRSimTcpTransport::KVRSimTcpTransport(int port) : port_(port) {}

KVRSimTcpTransport::~KVRSimTcpTransport() {
    close();
}

std::string KVRSimTcpTransport::open() {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener_ < 0) fail("socket");
    int yes = 1;
    setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port_));
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) fail("bind");
    if (::listen(listener_, 4) != 0) fail("listen");
    socklen_t length = sizeof address;
    if (::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) fail("getsockname");
    return "tcp://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
}

KVRSimTransport::Received KVRSimTcpTransport::receive() {
    if (client_ < 0) {
        client_ = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (client_ >= 0) {
            int yes = 1;
            setsockopt(client_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        }
        return {{}, true};
    }
    char buffer[4096];
    ssize_t count = ::recv(client_, buffer, sizeof buffer, 0);
    if (count > 0) {
        return {std::string(buffer, static_cast<size_t>(count)), false};
    }
    if (count < 0 && errno == EINTR) {
        return {};
    }
    dropClient();
    return {{}, true};
}

void KVRSimTcpTransport::send(std::string_view bytes) {
    while (client_ >= 0 && !bytes.empty()) {
        ssize_t count = ::send(client_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            dropClient();
            return;
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

std::optional<std::string> KVRSimTcpTransport::hangUp() {
    dropClient();
    return std::nullopt;
}

void KVRSimTcpTransport::dropClient() {
    if (client_ >= 0) {
        ::close(client_);
        client_ = -1;
    }
}

void KVRSimTcpTransport::close() {
    dropClient();
    if (listener_ >= 0) {
        ::close(listener_);
        listener_ = -1;
    }
}
