#pragma once

#include <string>

/// A loopback TCP port held for the life of the object. Without `listening`
/// the port is only bound: connections to it are refused, and no other program
/// can take it while the test runs (a port found free and released at once may
/// be in use again by the time the test points something at it).
class KVRLoopbackPort {
public:
    explicit KVRLoopbackPort(bool listening = false);
    ~KVRLoopbackPort();
    KVRLoopbackPort(const KVRLoopbackPort&) = delete;
    KVRLoopbackPort& operator=(const KVRLoopbackPort&) = delete;

    int port() const { return port_; }
    /// "127.0.0.1:PORT".
    std::string hostAndPort() const { return "127.0.0.1:" + std::to_string(port_); }
    /// The next connection (listening ports only); -1 on failure.
    int accept();

private:
    int fd_ = -1;
    int port_ = 0;
};
