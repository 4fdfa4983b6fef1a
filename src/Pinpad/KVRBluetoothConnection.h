#pragma once

#include "Pinpad/KVRAbecsFrameCodec.h"
#include "Pinpad/KVRConnectionProtocol.h"
#include "Platform/KVRAccessory.h"
#include "Platform/KVRAccessorySession.h"
#include "Platform/KVRStream.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

/// The one byte pipe to the PIN pad: writes ABECS command frames and reads
/// reply frames (KVRAbecsFrameCodec), one command at a time, on the calling
/// thread. Notification (NTM) frames are posted as "KVRPinpadNTMMessage"
/// (converted from Latin-1 to UTF-8) and never returned as replies.
///
/// In both links: stale input is dropped when the session opens and before
/// each command; the reply is the next frame named like the command sent
/// (others are logged and dropped); frames over 1024 bytes are dropped; with
/// "Kovra Pinpad Read Timeout" (seconds) set, the whole reply must arrive
/// that long after the request or the exchange fails with the KVRException
/// "PinpadTimeout". Each accepted write is followed by the pause
/// "Kovra Pinpad Write Pause" (seconds).
///
/// "Kovra Pinpad Link" = "abecs" adds the ABECS link rules: DC3 stuffing, a
/// wait of 2 s for ACK/NAK after each command (resent on NAK, a time-out
/// after the third), NAK on a reply with a bad CRC (up to 3 times), CAN when
/// the session opens, 10 s for commands that need no cardholder, and no write
/// pause unless one is set. Absent or "spec", the default link waits for no
/// ACK, sends no NAK and pauses 0.5 s after each write.
class KVRBluetoothConnection : public KVRConnectionProtocol {
public:
    static constexpr uint8_t kSyn = KVRAbecsFrameCodec::kSyn;
    static constexpr uint8_t kEtb = KVRAbecsFrameCodec::kEtb;
    static constexpr size_t kMessageBufferSize = 1024;
    static constexpr size_t kStagingBufferSize = 65536;
    static constexpr size_t kStreamReadSize = 65530;

    static std::shared_ptr<KVRBluetoothConnection> sharedController();
    /// Closes the shared link's session and forgets the link; the next
    /// sharedController() makes a fresh one, as in a new process.
    static void resetSharedController();
    /// Posts a notification frame's text ("NTM" and its message) as
    /// "KVRPinpadNTMMessage": the message from its tenth byte, trimmed, in UTF-8.
    static void postNotification(const std::string& text);

    ~KVRBluetoothConnection() override;
    KVRBluetoothConnection(const KVRBluetoothConnection&) = delete;
    KVRBluetoothConnection& operator=(const KVRBluetoothConnection&) = delete;

    /// Keeps the accessory and protocol for openSession(); opens nothing.
    void setupControllerForAccessory(std::shared_ptr<KVRAccessory> accessory, std::string protocol);
    /// True when a session exists afterwards. An existing session is kept and its streams opened again.
    bool openSession();
    bool isDeviceConnected() override;
    void closeSession();

    void sendRequest(KVRBaseCommandRequest& request) override;
    /// The next reply that is not a notification, NUL-terminated, inside
    /// messageBuffer(); at most 1023 bytes of it are kept.
    const char* readMessage() override;
    /// From any thread: ends the command in flight as if the PIN pad had
    /// answered 013 (CAN, up to 2 s for EOT, up to 3 times). False when no
    /// command was in flight or its reply came first.
    bool abortCurrentCommand() override;

    /// Queues bytes and sends what the stream accepts; true when nothing is left queued.
    bool writeData(const std::vector<uint8_t>& data);
    /// Sends queued bytes while the output stream accepts them.
    void writeData();
    /// The next byte from the PIN pad, waiting for it (up to the reply's deadline).
    uint8_t readByte();
    /// Diagnostic: drains the input stream into the read buffer, logging each byte.
    void readData();
    /// The first `count` bytes of the read buffer, removed from it; nothing when fewer are there.
    std::optional<std::vector<uint8_t>> readDataWithBytes(size_t count);
    size_t readBytesAvailable() const { return dataRead_.size(); }

    static uint16_t calculateCrc(const uint8_t* bytes, uint32_t length);

    /// Stream events: logged; space available sends what is queued.
    void streamHandleEvent(KVRStream& stream, KVRStreamEvent event);

    const std::shared_ptr<KVRAccessory>& accessory() const { return accessory_; }
    const std::string& protocol() const { return protocol_; }
    const char* messageBuffer() const { return messageBuffer_.data(); }

private:
    KVRBluetoothConnection();

    /// What one wait for input has already logged, so a dead link logs once, not every turn.
    struct WaitReports {
        bool end = false;
        bool error = false;
    };
    using Clock = std::chrono::steady_clock;
    /// Thrown inside the link when an abort was asked for; never leaves it.
    struct AbortSignal {};

    /// The next byte; nothing once `deadline` (or, without one, the reply's deadline) has passed.
    std::optional<uint8_t> nextByte(std::optional<Clock::time_point> deadline = std::nullopt);
    bool fillStagingBuffer(std::optional<Clock::time_point> deadline);
    bool waitForInput(std::chrono::milliseconds slice, WaitReports& reports);
    std::optional<Clock::time_point> replyDeadline() const;
    [[noreturn]] static void failTimedOut(const std::string& why);
    void sendUntilAcknowledged(const std::vector<uint8_t>& packet);
    void writeControl(uint8_t byte);
    bool cancelAndWaitForEot(int attempts);
    const char* endAsCancelled();
    void finishCommand(bool aborted);
    void keepText(const std::string& text);
    void sendQueuedWhenPossible();
    void discardPendingInput();
    void pauseAfterWrite() const;
    static bool abecsLinkSelected();
    static std::optional<Clock::duration> readTimeout();
    KVRInputStream* input() const;
    KVROutputStream* output() const;

    std::shared_ptr<KVRAccessory> accessory_;
    std::string protocol_;
    std::shared_ptr<KVRAccessorySession> session_;
    std::vector<uint8_t> dataWritten_;
    std::vector<uint8_t> dataRead_;
    long long bytesRead_ = 0;
    std::array<char, kMessageBufferSize> messageBuffer_{};
    std::array<uint8_t, kStagingBufferSize> buffer_{};
    long long bufferLength_ = 0;
    long long bufferPosition_ = 0;
    std::optional<uint8_t> pushedBack_;
    KVRAbecsFrameCodec decoder_;

    // The command in flight (calling thread only, but for the abort below).
    bool abecs_ = false;
    std::string expectedName_;
    bool blockingCommand_ = false;
    Clock::time_point requestStart_{};
    bool cancelling_ = false;
    bool endedByAbort_ = false;

    // Abort from another thread: asked for, then waited for until the command ends.
    std::mutex abortMutex_;
    std::condition_variable commandEnded_;
    std::atomic<bool> inFlight_{false};
    std::atomic<bool> abortRequested_{false};
    bool lastCommandAborted_ = false;
};
