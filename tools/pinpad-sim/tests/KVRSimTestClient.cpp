#include "KVRSimTestClient.h"

#include "testing/KVRAbecsWire.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

KVRSimTestClient::KVRSimTestClient(const std::string& endpoint) {
    const std::string tcp = "tcp://127.0.0.1:";
    if (endpoint.rfind(tcp, 0) == 0) {
        fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<uint16_t>(std::stoi(endpoint.substr(tcp.size()))));
        if (connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            throw std::runtime_error("cannot connect to " + endpoint);
        }
    } else {
        fd_ = open(endpoint.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        if (fd_ < 0) {
            throw std::runtime_error("cannot open " + endpoint);
        }
    }
}

KVRSimTestClient::~KVRSimTestClient() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

void KVRSimTestClient::send(std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t count = write(fd_, bytes.data(), bytes.size());
        if (count <= 0) {
            throw std::runtime_error("write failed");
        }
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

bool KVRSimTestClient::readable(std::chrono::milliseconds patience) const {
    pollfd descriptor{fd_, POLLIN, 0};
    return poll(&descriptor, 1, static_cast<int>(patience.count())) > 0;
}

std::string KVRSimTestClient::readChunk(std::chrono::milliseconds patience) {
    if (!readable(patience)) return {};
    char buffer[4096];
    ssize_t count = read(fd_, buffer, sizeof buffer);
    return count > 0 ? std::string(buffer, static_cast<size_t>(count)) : std::string();
}

std::optional<char> KVRSimTestClient::readByte(std::chrono::milliseconds patience) {
    char byte;
    if (!readable(patience) || read(fd_, &byte, 1) != 1) return std::nullopt;
    return byte;
}

char KVRSimTestClient::requireByte() {
    auto byte = readByte();
    if (!byte) {
        throw std::runtime_error("the emulator sent nothing");
    }
    return *byte;
}

KVRSimTestClient::Frame KVRSimTestClient::readFrame() {
    Frame frame;
    char byte = requireByte();
    if (byte != KVRAbecsWire::kSyn) {
        throw std::runtime_error("a frame must start with SYN, got " + KVRAbecsWire::hexDump(std::string(1, byte)));
    }
    frame.raw.push_back(byte);
    while ((byte = requireByte()) != KVRAbecsWire::kEtb) {
        frame.raw.push_back(byte);
        if (byte != KVRAbecsWire::kSyn) {
            frame.text.push_back(byte);
        }
    }
    frame.raw.push_back(byte);
    std::string crc{requireByte(), requireByte()};
    frame.raw += crc;
    frame.crcMatches = KVRAbecsWire::frame(frame.text).substr(frame.text.size() + 2) == crc;
    return frame;
}

std::string KVRSimTestClient::exchange(std::string_view text) {
    send(KVRAbecsWire::frame(text));
    char first = requireByte();
    if (first != KVRAbecsWire::kAck) {
        throw std::runtime_error("expected ACK for " + std::string(text.substr(0, 3)) + ", got " +
                                 KVRAbecsWire::hexDump(std::string(1, first)));
    }
    auto frame = readFrame();
    if (!frame.crcMatches) {
        throw std::runtime_error("the reply's CRC does not match its text");
    }
    return frame.text;
}

bool KVRSimTestClient::seesHangUp() {
    char byte;
    return readable(kPatience) && read(fd_, &byte, 1) <= 0;
}
