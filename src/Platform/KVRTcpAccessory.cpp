#include "Platform/KVRTcpAccessory.h"

#include <kovra/KVRLoggingUtil.h>

#include "Platform/KVRFdInputStream.h"
#include "Platform/KVRFdOutputStream.h"
#include "Utils/KVRStringUtil.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {
constexpr int kConnectTimeoutMilliseconds = 5000;

bool waitConnected(int fd) {
    struct pollfd p {fd, POLLOUT, 0};
    int r;
    do {
        r = ::poll(&p, 1, kConnectTimeoutMilliseconds);
    } while (r < 0 && errno == EINTR);
    if (r <= 0) return false;
    int error = 0;
    socklen_t length = sizeof error;
    return getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length) == 0 && error == 0;
}

int connectTo(const addrinfo* address) {
    int fd = ::socket(address->ai_family, address->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, address->ai_protocol);
    if (fd < 0) return -1;
    if (::connect(fd, address->ai_addr, address->ai_addrlen) == 0 || (errno == EINPROGRESS && waitConnected(fd))) {
        int one = 1;
        // Frames are small and each waits for its answer: Nagle would only add delay.
        setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        return fd;
    }
    ::close(fd);
    return -1;
}
}  // namespace

KVRTcpAccessory::KVRTcpAccessory(std::string host, std::string port, std::vector<std::string> protocolStrings)
    : KVRAccessory("tcp://" + (host.find(':') != std::string::npos ? "[" + host + "]" : host) + ":" + port,
                   std::move(protocolStrings)),
      host_(std::move(host)),
      port_(std::move(port)) {}

std::shared_ptr<KVRTcpAccessory> KVRTcpAccessory::fromUrl(const std::string& url) {
    const std::string scheme = "tcp://";
    if (!KVRStringUtil::startsWith(url, scheme)) return nullptr;
    std::string rest = url.substr(scheme.size());
    std::string host, port;
    if (!rest.empty() && rest[0] == '[') {
        size_t close = rest.find("]:");
        if (close == std::string::npos) return nullptr;
        host = rest.substr(1, close - 1);
        port = rest.substr(close + 2);
    } else {
        size_t colon = rest.rfind(':');
        if (colon == std::string::npos) return nullptr;
        host = rest.substr(0, colon);
        port = rest.substr(colon + 1);
    }
    if (host.empty() || port.empty() || port.find_first_not_of("0123456789") != std::string::npos) return nullptr;
    return std::make_shared<KVRTcpAccessory>(host, port);
}

int KVRTcpAccessory::connectSocket() const {
    addrinfo hints {};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* addresses = nullptr;
    int status = getaddrinfo(host_.c_str(), port_.c_str(), &hints, &addresses);
    if (status != 0) {
        KVRLoggingUtil::printLog("cannot resolve " + host_ + ": " + gai_strerror(status));
        return -1;
    }
    int fd = -1;
    for (addrinfo* a = addresses; a && fd < 0; a = a->ai_next) fd = connectTo(a);
    freeaddrinfo(addresses);
    if (fd < 0) KVRLoggingUtil::printLog("cannot connect to " + name());
    return fd;
}

KVRAccessory::Streams KVRTcpAccessory::connectStreams(const std::string&) {
    int fd = connectSocket();
    if (fd < 0) return {};
    auto descriptor = std::make_shared<KVRFileDescriptor>(fd);
    return {std::make_shared<KVRFdInputStream>(descriptor), std::make_shared<KVRFdOutputStream>(descriptor)};
}
