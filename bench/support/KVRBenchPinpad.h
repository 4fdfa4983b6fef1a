#pragma once

#include "Platform/KVRMemoryAccessory.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// The PIN pad's side of the in-memory accessory, with no latency of its own.
/// A measured flow is fed replies queued before the library asks for them, so
/// the clock sees the library alone; the sequence of replies a flow needs is
/// learnt beforehand by answering it once from a thread (`learn`). Every byte
/// each way is counted: that is what the flow puts on the PIN pad's line.
/// Its frame code is its own (the table-driven reference CRC).
class KVRBenchPinpad {
public:
    /// Request text in, reply texts out (notifications first, the reply last).
    using Handler = std::function<std::vector<std::string>(const std::string& request)>;

    KVRBenchPinpad();
    ~KVRBenchPinpad();
    KVRBenchPinpad(const KVRBenchPinpad&) = delete;
    KVRBenchPinpad& operator=(const KVRBenchPinpad&) = delete;

    const std::shared_ptr<KVRMemoryAccessory>& accessory() const { return accessory_; }
    /// Points the shared link at this PIN pad and opens its session.
    bool connectSharedLink() const;

    /// Acknowledgement byte and frame of every text, as the PIN pad sends them.
    static std::vector<uint8_t> replyBytes(const std::vector<std::string>& texts);
    /// SYN, text, ETB, CRC high and low.
    static std::vector<uint8_t> frame(const std::string& text);

    /// Hands bytes to the library's side at once.
    void queue(const std::vector<uint8_t>& bytes);
    /// Takes what the library wrote since the last call and returns the
    /// request texts it held.
    std::vector<std::string> takeRequests();
    /// Takes what the library wrote since the last call; returns its length.
    size_t drain();

    /// Runs `flow` while a thread answers every request with `handler`;
    /// returns the request texts, in order, and the texts answered, in the
    /// order the PIN pad sent them (ready for replyBytes).
    struct Script {
        std::vector<std::string> requests;
        std::vector<std::string> replies;
    };
    Script learn(const Handler& handler, const std::function<void()>& flow);

    uint64_t bytesFromLibrary() const { return bytesFromLibrary_; }
    uint64_t bytesToLibrary() const { return bytesToLibrary_; }
    void resetCounts() { bytesFromLibrary_ = bytesToLibrary_ = 0; }

private:
    /// Request frames cut from the bytes the library writes.
    class RequestParser {
    public:
        /// True when `byte` completed a frame; its text is then in text().
        bool consume(uint8_t byte);
        const std::string& text() const { return text_; }

    private:
        enum class State { Idle, Text, CrcHigh, CrcLow } state_ = State::Idle;
        std::string text_;
    };

    size_t readFromLibrary(const std::function<void(const std::string&)>& onRequest);

    std::shared_ptr<KVRMemoryAccessory> accessory_;
    RequestParser parser_;
    std::atomic<uint64_t> bytesFromLibrary_{0};
    std::atomic<uint64_t> bytesToLibrary_{0};
};
