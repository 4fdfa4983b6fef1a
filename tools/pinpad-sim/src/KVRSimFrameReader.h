#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// Reassembles request frames from bytes that arrive in arbitrary pieces.
/// A SYN inside a frame starts the frame again (the host gave up on the
/// previous one); bytes between frames are reported and otherwise ignored.
class KVRSimFrameReader {
public:
    struct Frame {
        std::string text;
        bool crcMatches = false;
        bool overlong = false;
    };
    using FrameHandler = std::function<void(const Frame&)>;
    using NoiseHandler = std::function<void(unsigned char byte)>;

    /// The longest request text the host can produce.
    static constexpr size_t kMaximumText = 1023;

    KVRSimFrameReader(FrameHandler onFrame, NoiseHandler onNoise);

    void feed(std::string_view bytes);
    /// Forgets a partial frame (the peer went away).
    void reset();

private:
    enum class State { Idle, Text, CrcHigh, CrcLow };

    void take(unsigned char byte);
    void finish(unsigned char crcLow);

    FrameHandler onFrame_;
    NoiseHandler onNoise_;
    State state_ = State::Idle;
    std::string text_;
    bool overlong_ = false;
    unsigned char crcHigh_ = 0;
};
