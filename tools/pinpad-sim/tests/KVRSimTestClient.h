#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

/// A scripted host: connects to a TCP endpoint or opens a pseudo-terminal
/// path, writes bytes and reads replies with a time limit, so a missing
/// reply fails the test instead of hanging it.
class KVRSimTestClient {
public:
    static constexpr std::chrono::milliseconds kPatience{5000};

    /// The raw and decoded parts of one frame read from the emulator.
    struct Frame {
        std::string text;  ///< without SYN, ETB, CRC or stray SYN bytes
        std::string raw;   ///< every byte from the first SYN to the CRC
        bool crcMatches = false;
    };

    /// "tcp://127.0.0.1:PORT" or a device path.
    explicit KVRSimTestClient(const std::string& endpoint);
    ~KVRSimTestClient();
    KVRSimTestClient(const KVRSimTestClient&) = delete;
    KVRSimTestClient& operator=(const KVRSimTestClient&) = delete;

    void send(std::string_view bytes);
    /// The next byte; none when the time runs out or the peer hung up.
    std::optional<char> readByte(std::chrono::milliseconds patience = kPatience);
    /// Whatever one read() returns (empty on time-out or hang-up).
    std::string readChunk(std::chrono::milliseconds patience = kPatience);
    /// Reads a frame starting at its SYN; throws when it does not come.
    Frame readFrame();
    /// Sends a request frame, expects ACK and returns the response frame,
    /// throwing when the byte is not ACK or the CRC does not match.
    std::string exchange(std::string_view text);
    /// True when the peer closes the connection (or hangs up the terminal) in time.
    bool seesHangUp();

private:
    char requireByte();
    bool readable(std::chrono::milliseconds patience) const;

    int fd_ = -1;
};
