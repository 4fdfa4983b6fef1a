#include "Pinpad/KVRBluetoothConnection.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRException.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRNotificationCenter.h>

#include "Pinpad/Commands/KVRBaseCommandRequest.h"
#include "Utils/KVRCardDataMasking.h"
#include "Utils/KVRStringUtil.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto kWaitSlice = 100ms;
constexpr auto kPendingWriteSlice = 10ms;
constexpr auto kSpuriousWakeupPause = 10ms;
constexpr double kDefaultWritePauseSeconds = 0.5;
// Bounds that keep absurd settings from overflowing the clocks.
constexpr double kLongestWritePauseSeconds = 60;
constexpr double kLongestReadTimeoutSeconds = 1e7;
constexpr size_t kMessageLimit = KVRBluetoothConnection::kMessageBufferSize - 1;

// CRC-16/XMODEM of every byte value: polynomial 0x1021, most significant bit first.
constexpr std::array<uint16_t, 256> makeCrcTable() {
    std::array<uint16_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte) {
        auto crc = static_cast<uint16_t>(byte << 8);
        for (int bit = 0; bit < 8; ++bit) crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
        table[byte] = crc;
    }
    return table;
}
constexpr std::array<uint16_t, 256> kCrcTable = makeCrcTable();

std::mutex& sharedMutex() {
    static std::mutex m;
    return m;
}

std::shared_ptr<KVRBluetoothConnection>& sharedInstance() {
    static auto* instance = new std::shared_ptr<KVRBluetoothConnection>();
    return *instance;
}

std::string forLog(const std::string& text, bool request) {
    return request ? KVRCardDataMasking::pinpadRequestForLog(text) : KVRCardDataMasking::pinpadReplyForLog(text);
}

}  // namespace

KVRBluetoothConnection::KVRBluetoothConnection() = default;

KVRBluetoothConnection::~KVRBluetoothConnection() {
    closeSession();
    setupControllerForAccessory(nullptr, std::string());
}

std::shared_ptr<KVRBluetoothConnection> KVRBluetoothConnection::sharedController() {
    std::lock_guard lock(sharedMutex());
    auto& instance = sharedInstance();
    if (!instance) instance.reset(new KVRBluetoothConnection());
    return instance;
}

void KVRBluetoothConnection::resetSharedController() {
    std::shared_ptr<KVRBluetoothConnection> old;
    {
        std::lock_guard lock(sharedMutex());
        old.swap(sharedInstance());
    }
    if (!old) return;
    old->closeSession();
    old->setupControllerForAccessory(nullptr, std::string());
}

void KVRBluetoothConnection::setupControllerForAccessory(std::shared_ptr<KVRAccessory> accessory, std::string protocol) {
    accessory_ = std::move(accessory);
    protocol_ = std::move(protocol);
}

bool KVRBluetoothConnection::openSession() {
    if (!session_ && accessory_) session_ = accessory_->openSession(protocol_);
    if (!session_) {
        KVRLoggingUtil::printLog("creating session failed");
        return false;
    }
    for (KVRStream* stream : {static_cast<KVRStream*>(input()), static_cast<KVRStream*>(output())}) {
        stream->open();
        streamHandleEvent(*stream, KVRStreamEvent::OpenCompleted);
    }
    return true;
}

bool KVRBluetoothConnection::isDeviceConnected() { return session_ != nullptr; }

void KVRBluetoothConnection::closeSession() {
    if (session_) {
        input()->close();
        output()->close();
    }
    session_.reset();
    dataWritten_.clear();
    dataRead_.clear();
}

KVRInputStream* KVRBluetoothConnection::input() const { return session_ ? session_->inputStream().get() : nullptr; }

KVROutputStream* KVRBluetoothConnection::output() const { return session_ ? session_->outputStream().get() : nullptr; }

// ---- Sending ----

void KVRBluetoothConnection::sendRequest(KVRBaseCommandRequest& request) {
    char text[KVRCommandBufferSize];
    request.getCommand(text);
    size_t length = strnlen(text, kMessageLimit);
    KVRLoggingUtil::console(KVRStringUtil::format("+++++++++ %s", forLog(std::string(text, length), true).c_str()));

    std::vector<uint8_t> frame;
    frame.reserve(length + 4);
    frame.push_back(kSyn);
    frame.insert(frame.end(), text, text + length);
    frame.push_back(kEtb);
    uint16_t crc = calculateCrc(frame.data() + 1, static_cast<uint32_t>(length + 1));
    frame.push_back(static_cast<uint8_t>(crc >> 8));
    frame.push_back(static_cast<uint8_t>(crc & 0xFF));

    if (discardBeforeNextRequest_) discardPendingInput();
    writeData(frame);
}

bool KVRBluetoothConnection::writeData(const std::vector<uint8_t>& data) {
    dataWritten_.insert(dataWritten_.end(), data.begin(), data.end());
    writeData();
    return dataWritten_.empty();
}

void KVRBluetoothConnection::writeData() {
    KVROutputStream* out = output();
    while (out && !dataWritten_.empty() && out->hasSpaceAvailable()) {
        long written = out->write(dataWritten_.data(), dataWritten_.size());
        if (written == -1) {
            KVRLoggingUtil::printLog("write error");
            return;
        }
        if (written > 0) {
            pauseAfterWrite();
            size_t taken = std::min(static_cast<size_t>(written), dataWritten_.size());
            dataWritten_.erase(dataWritten_.begin(), dataWritten_.begin() + static_cast<std::ptrdiff_t>(taken));
        }
    }
}

// PIN pads need time between frames; the setting is read on every write so
// that an application (or a test) can change it at any moment.
void KVRBluetoothConnection::pauseAfterWrite() const {
    double seconds = KVRApplicationInfo::numberForKey("Kovra Pinpad Write Pause").value_or(kDefaultWritePauseSeconds);
    if (seconds > 0) std::this_thread::sleep_for(std::chrono::duration<double>(std::min(seconds, kLongestWritePauseSeconds)));
}

void KVRBluetoothConnection::sendQueuedWhenPossible() {
    KVROutputStream* out = output();
    if (out && !dataWritten_.empty() && out->hasSpaceAvailable())
        streamHandleEvent(*out, KVRStreamEvent::HasSpaceAvailable);
}

// ---- Reading ----

const char* KVRBluetoothConnection::readMessage() {
    for (;;) {
        readByte();  // the acknowledgement that precedes every frame
        readFrame();
        std::string text(messageBuffer_.data());
        if (!KVRStringUtil::startsWith(text, "NTM")) {
            KVRLoggingUtil::console(KVRStringUtil::format("--------- %s", forLog(text, false).c_str()));
            return messageBuffer_.data();
        }
        std::string notification = KVRStringUtil::safeSubstr(KVRStringUtil::trim(text), 9);
        KVRNotificationCenter::defaultCenter().postNotification("KVRPinpadNTMMessage", notification);
        KVRLoggingUtil::console(KVRStringUtil::format("--------- %s", forLog(text, false).c_str()));
    }
}

// Text up to ETB into messageBuffer (SYN dropped wherever it appears), then
// the two CRC bytes, which are not checked: the exchange has no resend, so a
// damaged reply is handed on and its fields read leniently. The buffer stays
// terminated even when a time-out interrupts the frame.
void KVRBluetoothConnection::readFrame() {
    dataRead_.clear();
    size_t stored = 0;
    messageBuffer_[0] = '\0';
    for (;;) {
        uint8_t byte = readByte();
        if (byte == kSyn) continue;
        if (byte == kEtb) break;
        if (stored < kMessageLimit) {
            messageBuffer_[stored++] = static_cast<char>(byte);
            messageBuffer_[stored] = '\0';
            dataRead_.push_back(byte);
        }
    }
    dataRead_.push_back(kEtb);
    readByte();
    readByte();
}

uint8_t KVRBluetoothConnection::readByte() {
    if (bufferLength_ == 0) fillStagingBuffer();
    uint8_t byte = buffer_[static_cast<size_t>(bufferPosition_++)];
    if (bufferPosition_ >= bufferLength_) bufferPosition_ = bufferLength_ = 0;
    return byte;
}

// The read time-out is read on every turn, so an application can set or
// change it while a read is waiting; it counts from the start of the wait.
void KVRBluetoothConnection::fillStagingBuffer() {
    const auto waitStart = std::chrono::steady_clock::now();
    WaitReports reports;
    for (;;) {
        sendQueuedWhenPossible();
        std::chrono::milliseconds slice = dataWritten_.empty() ? kWaitSlice : kPendingWriteSlice;
        auto timeout = readTimeout();
        if (timeout) {
            auto left = std::chrono::ceil<std::chrono::milliseconds>(waitStart + *timeout - std::chrono::steady_clock::now());
            slice = std::clamp(left, std::chrono::milliseconds(0), slice);
        }
        if (waitForInput(slice, reports)) return;
        if (timeout && std::chrono::steady_clock::now() >= waitStart + *timeout) {
            discardBeforeNextRequest_ = true;
            throw KVRException("PinpadTimeout",
                               KVRStringUtil::format("The PIN pad sent nothing for %g seconds",
                                                     std::chrono::duration<double>(*timeout).count()));
        }
    }
}

// One turn of the wait: true when the staging buffer was filled. A stream at
// its end is polled by sleeping, not by spinning, until bytes come again.
bool KVRBluetoothConnection::waitForInput(std::chrono::milliseconds slice, WaitReports& reports) {
    KVRInputStream* in = input();
    if (!in || !in->isOpen()) {
        std::this_thread::sleep_for(slice);
        return false;
    }
    if (!in->waitForBytesAvailable(slice)) return false;
    if (in->streamStatus() != KVRStreamStatus::AtEnd) streamHandleEvent(*in, KVRStreamEvent::HasBytesAvailable);
    long count = in->read(buffer_.data(), kStreamReadSize);
    if (count > 0) {
        bufferLength_ = count;
        bufferPosition_ = 0;
        return true;
    }
    if (in->streamStatus() == KVRStreamStatus::AtEnd) {
        if (!reports.end) streamHandleEvent(*in, KVRStreamEvent::EndEncountered);
        reports.end = true;
        std::this_thread::sleep_for(slice);
    } else if (count < 0) {
        if (!reports.error) streamHandleEvent(*in, KVRStreamEvent::ErrorOccurred);
        reports.error = true;
        std::this_thread::sleep_for(slice);
    } else {
        std::this_thread::sleep_for(std::min<std::chrono::milliseconds>(slice, kSpuriousWakeupPause));
    }
    return false;
}

std::optional<std::chrono::steady_clock::duration> KVRBluetoothConnection::readTimeout() {
    double seconds = KVRApplicationInfo::numberForKey("Kovra Pinpad Read Timeout").value_or(0);
    if (!(seconds > 0)) return std::nullopt;
    seconds = std::min(seconds, kLongestReadTimeoutSeconds);
    return std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
}

void KVRBluetoothConnection::discardPendingInput() {
    discardBeforeNextRequest_ = false;
    bufferLength_ = bufferPosition_ = 0;
    KVRInputStream* in = input();
    long discarded = 0;
    while (in && in->hasBytesAvailable()) {
        long count = in->read(buffer_.data(), kStreamReadSize);
        if (count <= 0) break;
        discarded += count;
    }
    if (discarded > 0) KVRLoggingUtil::printLog(KVRStringUtil::format("discarded %ld late bytes", discarded));
}

void KVRBluetoothConnection::readData() {
    pauseAfterWrite();
    KVRInputStream* in = input();
    std::vector<uint8_t> chunk(kStagingBufferSize);
    while (in && in->hasBytesAvailable()) {
        long count = in->read(chunk.data(), kStreamReadSize);
        bytesRead_ = count;
        if (count <= 0) break;
        dataRead_.insert(dataRead_.end(), chunk.begin(), chunk.begin() + count);
        for (long i = 0; i < count; ++i) KVRLoggingUtil::printLog(KVRStringUtil::format("0x%X", chunk[static_cast<size_t>(i)]));
    }
}

std::optional<std::vector<uint8_t>> KVRBluetoothConnection::readDataWithBytes(size_t count) {
    if (dataRead_.size() < count) return std::nullopt;
    std::vector<uint8_t> bytes(dataRead_.begin(), dataRead_.begin() + static_cast<std::ptrdiff_t>(count));
    dataRead_.erase(dataRead_.begin(), dataRead_.begin() + static_cast<std::ptrdiff_t>(count));
    return bytes;
}

// One table lookup per byte instead of eight conditional shifts: the same
// CRC-16/XMODEM (check value 0x31C3 for "123456789"), at the speed of the
// usual table-driven implementation.
uint16_t KVRBluetoothConnection::calculateCrc(const uint8_t* bytes, uint32_t length) {
    uint16_t crc = 0;
    for (uint32_t i = 0; i < length; ++i)
        crc = static_cast<uint16_t>((crc << 8) ^ kCrcTable[((crc >> 8) ^ bytes[i]) & 0xFF]);
    return crc;
}

void KVRBluetoothConnection::streamHandleEvent(KVRStream& stream, KVRStreamEvent event) {
    unsigned long number = stream.streamNumber();
    switch (event) {
    case KVRStreamEvent::None:
        KVRLoggingUtil::printLog(KVRStringUtil::format("stream %lu event none", number));
        break;
    case KVRStreamEvent::OpenCompleted:
        KVRLoggingUtil::printLog(KVRStringUtil::format("stream %lu event open completed", number));
        break;
    case KVRStreamEvent::HasBytesAvailable:
        // The waiting read takes the bytes; taking one here would steal it from the frame.
        KVRLoggingUtil::printLog(KVRStringUtil::format("stream %lu event bytes available", number));
        break;
    case KVRStreamEvent::HasSpaceAvailable:
        KVRLoggingUtil::printLog(KVRStringUtil::format("stream %lu event space available", number));
        writeData();
        break;
    case KVRStreamEvent::ErrorOccurred:
        KVRLoggingUtil::printLog(KVRStringUtil::format("stream %lu event error", number));
        break;
    case KVRStreamEvent::EndEncountered:
        KVRLoggingUtil::printLog(KVRStringUtil::format("stream %lu event end encountered", number));
        break;
    default:
        KVRLoggingUtil::printLog(
            KVRStringUtil::format("Received unknown NSSTREAMEVENT : %0lx04x", static_cast<unsigned long>(event)));
        break;
    }
}
