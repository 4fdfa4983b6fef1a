#include <gtest/gtest.h>

#include <kovra/KVRApplicationInfo.h>

#include "Platform/KVRAccessoryManager.h"
#include "Platform/KVRSerialAccessory.h"
#include "Platform/KVRTcpAccessory.h"
#include "testing/KVRPseudoTerminal.h"
#include "testing/KVRMemoryAccessory.h"
#include "testing/KVRTempDirectory.h"
#include "testing/KVRTestFixture.h"

#include <arpa/inet.h>
#include <fstream>
#include <netinet/in.h>
#include <sys/socket.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<uint8_t>;

// Reads until `count` bytes came or two seconds passed.
Bytes readSome(KVRInputStream& in, size_t count) {
    Bytes out;
    uint8_t chunk[512];
    auto until = std::chrono::steady_clock::now() + 2s;
    while (out.size() < count && std::chrono::steady_clock::now() < until) {
        if (!in.waitForBytesAvailable(50ms)) continue;
        long n = in.read(chunk, std::min(sizeof chunk, count - out.size()));
        if (n > 0) out.insert(out.end(), chunk, chunk + n);
        if (in.streamStatus() == KVRStreamStatus::AtEnd) break;
    }
    return out;
}

void writeAll(KVROutputStream& out, const Bytes& bytes) {
    size_t sent = 0;
    while (sent < bytes.size()) {
        long n = out.write(bytes.data() + sent, bytes.size() - sent);
        ASSERT_GE(n, 0);
        if (n == 0) out.waitForSpaceAvailable(50ms);
        sent += static_cast<size_t>(n);
    }
}

// The peer went away: the stream reports its end instead of blocking.
void expectEnded(KVRInputStream& in) {
    uint8_t byte;
    EXPECT_TRUE(in.waitForBytesAvailable(1s));
    EXPECT_EQ(in.read(&byte, 1), 0);
    EXPECT_EQ(in.streamStatus(), KVRStreamStatus::AtEnd);
}

Bytes everyByte() {
    Bytes all(256);
    for (int i = 0; i < 256; ++i) all[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    return all;
}

TEST(KVRSerialAccessory, SpeedComesFromTheProtocolStringAndUnreachableDevicesGiveNoSession) {
    const std::pair<const char*, std::optional<int>> cases[] = {
        {"abecs", 19200},          {"abecs-19200", 19200}, {"abecs-115200", 115200}, {"abecs-9600", 9600},
        {"com.vendor.abecs", 19200}, {"abecs-", 19200},      {"abecs-12345", std::nullopt}, {"abecs-0", std::nullopt},
    };
    for (const auto& [protocol, rate] : cases) EXPECT_EQ(KVRSerialAccessory::baudRateForProtocol(protocol), rate) << protocol;

    KVRTempDirectory dir;
    std::ofstream(dir.file("plain")) << "not a terminal";
    EXPECT_FALSE(KVRSerialAccessory(dir.file("missing")).openSession("abecs-19200"));
    EXPECT_FALSE(KVRSerialAccessory(dir.file("plain")).openSession("abecs-19200"));
    KVRPseudoTerminal pty;
    EXPECT_FALSE(KVRSerialAccessory(pty.slavePath()).openSession("abecs"));  // not declared
    EXPECT_FALSE(KVRSerialAccessory(pty.slavePath(), "", {"abecs-12345"}).openSession("abecs-12345"));
}

TEST(KVRSerialAccessory, PseudoTerminalLineIsRawAtTheProtocolSpeed) {
    for (const char* protocol : {"abecs-19200", "abecs-115200"}) {
        SCOPED_TRACE(protocol);
        KVRPseudoTerminal pty(false);
        struct termios before {};
        ASSERT_EQ(tcgetattr(pty.masterFd(), &before), 0);
        ASSERT_NE(before.c_lflag & ICANON, 0u);  // the system's cooked line
        KVRSerialAccessory accessory(pty.slavePath(), "", {protocol});
        auto session = accessory.openSession(protocol);
        ASSERT_TRUE(session);
        session->inputStream()->open();
        session->outputStream()->open();

        struct termios tio {};
        ASSERT_EQ(tcgetattr(pty.masterFd(), &tio), 0);
        EXPECT_EQ(cfgetospeed(&tio), std::string(protocol) == "abecs-19200" ? B19200 : B115200);
        EXPECT_EQ(tio.c_cflag & CSIZE, static_cast<tcflag_t>(CS8));
        EXPECT_EQ(tio.c_cflag & (PARENB | CSTOPB), 0u);
        EXPECT_EQ(tio.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), 0u);
        EXPECT_EQ(tio.c_iflag & (ICRNL | IXON | ISTRIP), 0u);
        EXPECT_EQ(tio.c_oflag & OPOST, 0u);

        // Every byte value crosses unchanged both ways: SYN, ETB, CR, LF, ^C, XON/XOFF included.
        writeAll(*session->outputStream(), everyByte());
        EXPECT_EQ(readSome(*pty.input(), 256), everyByte());
        writeAll(*pty.output(), everyByte());
        EXPECT_EQ(readSome(*session->inputStream(), 256), everyByte());

        pty.hangUp();
        expectEnded(*session->inputStream());
    }
}

// A loopback listener on a free port. Without `listening` the port is only
// held: connections to it are refused, and no other program can start
// listening there while the test runs.
class Listener {
public:
    explicit Listener(bool listening = true) {
        fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        if (listening) ::listen(fd_, 1);
        socklen_t length = sizeof address;
        ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
    }
    ~Listener() { ::close(fd_); }
    int accept() { return ::accept(fd_, nullptr, nullptr); }
    std::string url() const { return "tcp://127.0.0.1:" + std::to_string(port_); }

private:
    int fd_;
    uint16_t port_ = 0;
};

TEST(KVRTcpAccessory, ExchangesBytesAndSeesThePeerGo) {
    Listener listener;
    auto accessory = KVRTcpAccessory::fromUrl(listener.url());
    ASSERT_TRUE(accessory);
    EXPECT_EQ(accessory->protocolStrings(), std::vector<std::string>{"abecs"});
    auto session = accessory->openSession("abecs");
    ASSERT_TRUE(session);
    session->inputStream()->open();
    session->outputStream()->open();
    int peer = listener.accept();
    ASSERT_GE(peer, 0);

    writeAll(*session->outputStream(), everyByte());
    Bytes received(256);
    size_t got = 0;
    while (got < received.size()) {
        ssize_t n = ::read(peer, received.data() + got, received.size() - got);
        ASSERT_GT(n, 0);
        got += static_cast<size_t>(n);
    }
    EXPECT_EQ(received, everyByte());
    ASSERT_EQ(::write(peer, "\x06\x16OPN000\x17", 9), 9);
    EXPECT_EQ(readSome(*session->inputStream(), 9), (Bytes{0x06, 0x16, 'O', 'P', 'N', '0', '0', '0', 0x17}));

    ::close(peer);
    expectEnded(*session->inputStream());
    // Writing to a closed peer fails with -1 instead of raising SIGPIPE.
    long result = 0;
    for (int i = 0; i < 50 && result >= 0; ++i) {
        result = session->outputStream()->write(everyByte().data(), 256);
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(result, -1);
}

TEST(KVRTcpAccessory, UrlsNameHostAndPortAndARefusedConnectionGivesNoSession) {
    auto v6 = KVRTcpAccessory::fromUrl("tcp://[::1]:7000");
    ASSERT_TRUE(v6);
    EXPECT_EQ(v6->host(), "::1");
    EXPECT_EQ(v6->port(), "7000");
    EXPECT_EQ(v6->name(), "tcp://[::1]:7000");
    for (const char* bad : {"tcp://host", "tcp://:80", "tcp://host:", "tcp://host:8o", "udp://host:80", "tcp://[::1]"})
        EXPECT_FALSE(KVRTcpAccessory::fromUrl(bad)) << bad;

    Listener closedPort(false);
    auto refused = KVRTcpAccessory::fromUrl(closedPort.url());
    ASSERT_TRUE(refused);
    EXPECT_FALSE(refused->openSession("abecs"));
}

class KVRAccessoryManagerTest : public KVRTestFixture {};

TEST_F(KVRAccessoryManagerTest, ListsRegisteredThenConfiguredDevices) {
    auto& manager = KVRAccessoryManager::sharedAccessoryManager();
    auto memory = std::make_shared<KVRMemoryAccessory>("Bench PIN pad");
    KVRTestFixture::addAccessory(memory);
    KVRApplicationInfo::setValue("Kovra Pinpad", std::string(
        " /dev/ttyACM7 , tcp://127.0.0.1:7000,/dev/ttyUSB3@115200, tcp://broken, /dev/ttyS0@123,,"));

    auto list = manager.connectedAccessories();
    std::vector<std::pair<std::string, std::vector<std::string>>> seen;
    for (const auto& a : list) seen.emplace_back(a->name(), a->protocolStrings());
    using P = std::vector<std::string>;
    EXPECT_EQ(seen, (std::vector<std::pair<std::string, P>>{{"Bench PIN pad", P{"abecs"}},
                                                            {"/dev/ttyACM7", P{"abecs-19200"}},
                                                            {"tcp://127.0.0.1:7000", P{"abecs"}},
                                                            {"/dev/ttyUSB3", P{"abecs-115200"}}}));
    KVRTestFixture::removeAccessory(memory);
    EXPECT_EQ(manager.connectedAccessories().size(), 3u);
}

TEST_F(KVRAccessoryManagerTest, EnumeratedPortsAreFilteredToPinpads) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"/dev/ttyACM0", "", true},
        {"/dev/rfcomm1", "", true},
        {"/dev/ttyUSB0", "PPC930 GERTEC", true},
        {"/dev/ttyUSB1", "Ingenico Lane/3000", true},
        {"/dev/ttyUSB2", "USB PinPad ABECS", true},
        {"/dev/ttyUSB3", "FT232R USB UART FTDI", false},
        {"/dev/ttyS0", "", false},
    };
    for (const auto& [path, description, expected] : cases)
        EXPECT_EQ(KVRAccessoryManager::looksLikePinpad(path, description), expected) << path << " " << description;
}

}  // namespace
