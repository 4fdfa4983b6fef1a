#pragma once

#include "KVRSimTransport.h"

#include <chrono>

/// A serial line of a given bit rate (10 bits a byte: start, 8 data, stop)
/// in front of another transport: bytes sent leave one at a time at the line's
/// pace, and bytes received are handed on only once their line time has
/// passed, so a request frame is taken as arrived when a real line would
/// have delivered its last byte.
class KVRSimPacedTransport : public KVRSimTransport {
public:
    static constexpr int kBitsPerByte = 10;

    KVRSimPacedTransport(KVRSimTransport& line, int bitsPerSecond);

    std::string open() override { return line_.open(); }
    int waitDescriptor() const override { return line_.waitDescriptor(); }
    Received receive() override;
    void send(std::string_view bytes) override;
    std::optional<std::string> hangUp() override { return line_.hangUp(); }
    void close() override { line_.close(); }

private:
    std::chrono::nanoseconds lineTime(size_t bytes) const;

    KVRSimTransport& line_;
    int bitsPerSecond_;
};
