#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

/// Reassembles request frames from bytes that arrive in arbitrary pieces and
/// undoes the DC3 byte stuffing of their data. A SYN inside a frame starts the
/// frame again (the host gave up on the previous one); a CAN abandons a
/// partial frame. Bytes outside frames, and every CAN, go to the control
/// handler.
class KVRSimFrameReader {
public:
    struct Frame {
        std::string text;  ///< with the stuffing undone
        bool crcMatches = false;
        bool overlong = false;
        /// Why the packet is malformed (a broken stuffing sequence), or empty.
        std::string malformed;
    };
    using FrameHandler = std::function<void(const Frame&)>;
    using ControlHandler = std::function<void(unsigned char byte)>;

    /// The longest packet data the legacy commands may carry.
    static constexpr size_t kMaximumText = 1024;

    KVRSimFrameReader(FrameHandler onFrame, ControlHandler onControl);

    void feed(std::string_view bytes);
    /// Forgets a partial frame (the peer went away).
    void reset();

private:
    enum class State { Idle, Text, Escape, CrcHigh, CrcLow };

    void take(unsigned char byte);
    void store(unsigned char byte);
    void finish(unsigned char crcLow);

    FrameHandler onFrame_;
    ControlHandler onControl_;
    State state_ = State::Idle;
    std::string text_;
    bool overlong_ = false;
    std::string malformed_;
    unsigned char crcHigh_ = 0;
};
