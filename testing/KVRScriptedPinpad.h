#pragma once

#include "Platform/KVRInputStream.h"
#include "testing/KVRMemoryAccessory.h"
#include "Platform/KVROutputStream.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// How a scripted PIN pad misbehaves.
struct KVRScriptedPinpadOptions {
    /// Byte sent ahead of every frame.
    uint8_t acknowledgement = 0x06;
    /// A stray SYN in the middle of every text.
    bool straySyn = false;
    /// Every frame written in two parts with a short gap.
    bool splitWrites = false;
    /// Frames carry a CRC that does not match.
    bool wrongCrc = false;
    /// All frames of one answer in a single write.
    bool oneWritePerAnswer = false;
    /// The byte order of a real PIN pad: one acknowledgement after the
    /// command, then the notifications and the reply with none between them.
    bool acknowledgeOnce = false;
    /// An ABECS PIN pad: DC3 stuffing both ways, NAK for a request with a
    /// bad CRC (not answered), the last reply again on NAK; implies acknowledgeOnce.
    bool abecs = false;
    /// ABECS: NAKs the first copies of every request.
    int nakFirstCopies = 0;
    /// ABECS: the first copies of every reply carry a bad CRC.
    int damagedReplies = 0;
};

/// A PIN pad on the far side of the real link, for the link's own tests
/// (command-level tests use KVRScriptedConnection). On its own thread it
/// reads request frames, records their texts and answers each with the
/// texts its handler returns: every
/// text goes out as acknowledgement byte + frame (notifications first, reply
/// last). An empty answer leaves the PIN pad silent. CAN is answered EOT in
/// any state. Its frame code is its own, so a fault in the library's framing
/// is not mirrored here.
class KVRScriptedPinpad {
public:
    using Handler = std::function<std::vector<std::string>(const std::string& request)>;

    using Options = KVRScriptedPinpadOptions;

    /// Answers every request with its name and return code 000.
    static Handler okHandler();

    /// On a fresh in-memory accessory.
    explicit KVRScriptedPinpad(Handler handler = okHandler(), Options options = Options());
    /// On other device-side streams (a pseudo-terminal's master, a socket); they must be open.
    KVRScriptedPinpad(std::shared_ptr<KVRInputStream> input, std::shared_ptr<KVROutputStream> output,
                      Handler handler = okHandler(), Options options = Options());
    ~KVRScriptedPinpad();
    KVRScriptedPinpad(const KVRScriptedPinpad&) = delete;
    KVRScriptedPinpad& operator=(const KVRScriptedPinpad&) = delete;

    /// The in-memory accessory; null for other streams.
    const std::shared_ptr<KVRMemoryAccessory>& accessory() const { return accessory_; }
    /// Points the shared link at this PIN pad and opens its session.
    bool connectSharedLink() const;

    void setHandler(Handler handler);

    /// The request texts received so far, in order.
    std::vector<std::string> requests() const;
    /// Raw bytes received so far, frames included.
    std::vector<uint8_t> receivedBytes() const;
    /// Requests whose CRC did not match.
    size_t badCrcCount() const;
    bool waitForRequests(size_t count, std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;

    /// Sends texts without a request (a late reply, an unsolicited notification).
    void send(const std::vector<std::string>& texts);

private:
    void run();
    void consume(uint8_t byte);
    void answer(const std::string& request);
    void writeAll(const std::vector<uint8_t>& bytes);

    std::shared_ptr<KVRMemoryAccessory> accessory_;
    std::shared_ptr<KVRInputStream> input_;
    std::shared_ptr<KVROutputStream> output_;

    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Handler handler_;
    Options options_;
    std::vector<std::string> requests_;
    std::vector<uint8_t> received_;
    size_t badCrcs_ = 0;

    // Frame parser state (PIN pad thread only).
    enum class State { Idle, Text, Escape, CrcHigh, CrcLow } state_ = State::Idle;
    std::string text_;
    uint16_t crcReceived_ = 0;
    int copiesSeen_ = 0;
    std::string lastRequest_;
    std::string lastReply_;
    int damagedLeft_ = 0;

    std::mutex writeMutex_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};
