#include "KVRSimPacedTransport.h"

#include <thread>

KVRSimPacedTransport::KVRSimPacedTransport(KVRSimTransport& line, int bitsPerSecond)
    : line_(line), bitsPerSecond_(bitsPerSecond) {}

std::chrono::nanoseconds KVRSimPacedTransport::lineTime(size_t bytes) const {
    return std::chrono::nanoseconds(static_cast<long long>(bytes) * kBitsPerByte * 1'000'000'000LL / bitsPerSecond_);
}

KVRSimTransport::Received KVRSimPacedTransport::receive() {
    // The host's bytes sit in the buffer as soon as it writes them; on a real
    // line the last of them would still be on its way.
    auto received = line_.receive();
    std::this_thread::sleep_for(lineTime(received.bytes.size()));
    return received;
}

void KVRSimPacedTransport::send(std::string_view bytes) {
    // Each byte is written when the line would have finished carrying it,
    // counted from the first, so that sleeping late does not add up.
    auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < bytes.size(); ++i) {
        std::this_thread::sleep_until(start + lineTime(i + 1));
        line_.send(bytes.substr(i, 1));
    }
}
