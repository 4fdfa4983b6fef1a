#pragma once

#include "testing/KVRMemoryAccessory.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// The PIN pad's side of the in-memory accessory, with no latency of its own
/// unless a line speed is simulated. It answers from a thread of its own, so
/// the CPU time of the flow's thread is the library's alone; the sequence of
/// requests a flow makes is learnt beforehand by answering it once (`learn`). Every byte
/// each way is counted: that is what the flow puts on the PIN pad's line.
/// Its frame code is its own (the table-driven reference CRC).
/// How the bench PIN pad's line behaves while it answers.
struct KVRBenchLine {
    /// Bit rate simulated on the line (10 bits a byte); 0 for none.
    int bitsPerSecond = 0;
    /// ABECS byte order: one ACK after each command, then the frames; EOT for CAN.
    bool abecs = false;
};

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

    using Line = KVRBenchLine;

    /// Runs `flow` while a thread answers every request with `handler`;
    /// returns the request texts, in order, and the texts answered, in the
    /// order the PIN pad sent them (ready for replyBytes).
    struct Script {
        std::vector<std::string> requests;
        std::vector<std::string> replies;
    };
    Script learn(const Handler& handler, const std::function<void()>& flow, Line line = Line());

    /// A thread answers every request with `handler` until stopAnswering().
    /// (The library drops input that arrives before its command, so replies
    /// cannot be queued ahead.)
    void startAnswering(const Handler& handler, Line line = Line());
    Script stopAnswering();
    /// Requests answered since startAnswering().
    size_t answeredRequests();

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
        /// Between frames: a byte here is a control byte (CAN, say).
        bool idle() const { return state_ == State::Idle; }

    private:
        enum class State { Idle, Text, CrcHigh, CrcLow } state_ = State::Idle;
        std::string text_;
    };

    size_t readFromLibrary(const std::function<void(const std::string&)>& onRequest,
                           const std::function<void(uint8_t)>& onControl = {});

    std::shared_ptr<KVRMemoryAccessory> accessory_;
    RequestParser parser_;
    std::thread device_;
    std::atomic<bool> stopAnswering_{false};
    std::mutex scriptMutex_;
    Script script_;
    std::atomic<uint64_t> bytesFromLibrary_{0};
    std::atomic<uint64_t> bytesToLibrary_{0};
};
