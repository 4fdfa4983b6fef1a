#pragma once

#include "Pinpad/KVRConnectionProtocol.h"
#include "Platform/KVRAccessory.h"
#include "Platform/KVRAccessorySession.h"
#include "Platform/KVRStream.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The one byte pipe to the PIN pad: writes ABECS command frames
/// (SYN, text, ETB, CRC-16/XMODEM high byte first) and reads reply frames,
/// one command at a time, on the calling thread. Notification (NTM) frames
/// are posted as "KVRPinpadNTMMessage" and never returned as replies.
///
/// Waiting for the PIN pad blocks the caller. By default it waits as long as
/// the PIN pad is silent; with "Kovra Pinpad Read Timeout" (seconds) set, a
/// silence that long fails the exchange with the KVRException "PinpadTimeout".
/// Each accepted write is followed by the pause "Kovra Pinpad Write Pause"
/// (seconds, 0.5 when absent), which slow PIN pads need between frames.
class KVRBluetoothConnection : public KVRConnectionProtocol {
public:
    static constexpr uint8_t kSyn = 0x16;
    static constexpr uint8_t kEtb = 0x17;
    static constexpr size_t kMessageBufferSize = 1024;
    static constexpr size_t kStagingBufferSize = 65536;
    static constexpr size_t kStreamReadSize = 65530;

    static std::shared_ptr<KVRBluetoothConnection> sharedController();
    /// Test seam: closes the shared link's session and forgets the link; the
    /// next sharedController() makes a fresh one.
    static void resetSharedController();

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

    /// Queues bytes and sends what the stream accepts; true when nothing is left queued.
    bool writeData(const std::vector<uint8_t>& data);
    /// Sends queued bytes while the output stream accepts them.
    void writeData();
    /// The next byte from the PIN pad, waiting for it.
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

    void readFrame();
    void fillStagingBuffer();
    bool waitForInput(std::chrono::milliseconds slice, WaitReports& reports);
    void sendQueuedWhenPossible();
    void discardPendingInput();
    void pauseAfterWrite() const;
    static std::optional<std::chrono::steady_clock::duration> readTimeout();
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
    /// Set when a wait timed out: a late reply must not answer the next command.
    bool discardBeforeNextRequest_ = false;
};
