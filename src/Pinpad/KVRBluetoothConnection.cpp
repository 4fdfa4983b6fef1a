#include "Pinpad/KVRBluetoothConnection.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>
#include <kovra/KVRNotificationCenter.h>

#include "Pinpad/Commands/KVRAbecsStatus.h"
#include "Pinpad/Commands/KVRBaseCommandRequest.h"
#include "Pinpad/KVRDisplayText.h"
#include "Pinpad/KVRLinkException.h"
#include "Platform/KVRSettingsKeys.h"
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

// The ABECS link's limits.
constexpr auto kAcknowledgementWait = 2s;
constexpr auto kEotWait = 2s;
constexpr int kSendAttempts = 3;
constexpr int kCancelAttempts = 3;
constexpr int kNaksPerReply = 3;
constexpr auto kNonBlockingReplyWait = 10s;

// Commands that wait for the cardholder may take any time.
bool isBlockingCommand(const std::string& name) { return name == "GCR" || name == "GOC" || name == "GPN"; }

std::mutex& sharedMutex() {
    static std::mutex m;
    return m;
}

std::shared_ptr<KVRBluetoothConnection>& sharedInstance() {
    static auto* instance = new std::shared_ptr<KVRBluetoothConnection>();
    return *instance;
}

// PIN pad texts are Latin-1; log lines are UTF-8.
std::string forLog(const std::string& text, bool request) {
    return KVRDisplayText::utf8FromLatin1(request ? KVRCardDataMasking::pinpadRequestForLog(text)
                                                  : KVRCardDataMasking::pinpadReplyForLog(text));
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
    // Whatever a killed predecessor left on the line is not ours; on the
    // ABECS link a CAN also stops a command it left running.
    discardPendingInput();
    if (abecsLinkSelected()) {
        abecs_ = true;
        decoder_.setStuffing(true);
        cancelAndWaitForEot(1);
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

bool KVRBluetoothConnection::abecsLinkSelected() {
    return KVRApplicationInfo::stringForKey(KVRSettingsKeys::kPinpadLink).value_or("spec") == "abecs";
}

void KVRBluetoothConnection::sendRequest(KVRBaseCommandRequest& request) {
    char text[KVRCommandBufferSize];
    request.getCommand(text);
    size_t length = strnlen(text, kMessageLimit);
    std::string command(text, length);
    KVRLoggingUtil::console(KVRStringUtil::format("+++++++++ %s", forLog(command, true).c_str()));

    abecs_ = abecsLinkSelected();
    decoder_.setStuffing(abecs_);
    expectedName_ = command.substr(0, 3);
    blockingCommand_ = isBlockingCommand(expectedName_);
    endedByAbort_ = false;
    // A reply left over from an earlier command (a time-out, a killed
    // process) must not answer this one.
    discardPendingInput();
    {
        std::lock_guard lock(abortMutex_);
        abortRequested_ = false;
        inFlight_ = true;
    }
    requestStart_ = Clock::now();
    auto packet = KVRAbecsFrameCodec::encode(command, abecs_);
    if (!abecs_) {
        writeData(packet);
        return;
    }
    try {
        sendUntilAcknowledged(packet);
    } catch (const AbortSignal&) {
        cancelAndWaitForEot(kCancelAttempts);
        endedByAbort_ = true;
    } catch (...) {
        finishCommand(false);
        throw;
    }
}

// ABECS: the PIN pad answers every command with ACK, or NAK when the packet
// reached it damaged; silence for 2 s or a third NAK ends the exchange.
void KVRBluetoothConnection::sendUntilAcknowledged(const std::vector<uint8_t>& packet) {
    for (int attempt = 1; attempt <= kSendAttempts; ++attempt) {
        writeData(packet);
        const auto until = Clock::now() + kAcknowledgementWait;
        for (;;) {
            auto byte = nextByte(until);
            if (!byte) failTimedOut(KVRStringUtil::format("The PIN pad did not acknowledge %s", expectedName_.c_str()));
            if (*byte == KVRAbecsFrameCodec::kAck) return;
            if (*byte == KVRAbecsFrameCodec::kNak) {
                KVRLoggingUtil::printLog(KVRStringUtil::format("NAK for %s", expectedName_.c_str()));
                break;
            }
            if (*byte == KVRAbecsFrameCodec::kSyn) {
                // A packet without its ACK: the PIN pad took the command.
                pushedBack_ = byte;
                return;
            }
        }
    }
    failTimedOut(KVRStringUtil::format("The PIN pad refused %s %d times", expectedName_.c_str(), kSendAttempts));
}

void KVRBluetoothConnection::writeControl(uint8_t byte) {
    dataWritten_.push_back(byte);
    writeData();
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

// Slow PIN pads on the default link need time between frames; on the ABECS
// link the ACK paces the exchange, so no pause unless one is set. The setting
// is read on every write so that an application (or a test) can change it at
// any moment.
void KVRBluetoothConnection::pauseAfterWrite() const {
    double seconds = KVRApplicationInfo::numberForKey(KVRSettingsKeys::kPinpadWritePause)
                         .value_or(abecs_ ? 0.0 : kDefaultWritePauseSeconds);
    if (seconds > 0) std::this_thread::sleep_for(std::chrono::duration<double>(std::min(seconds, kLongestWritePauseSeconds)));
}

void KVRBluetoothConnection::sendQueuedWhenPossible() {
    KVROutputStream* out = output();
    if (out && !dataWritten_.empty() && out->hasSpaceAvailable())
        streamHandleEvent(*out, KVRStreamEvent::HasSpaceAvailable);
}

// ---- Reading ----

const char* KVRBluetoothConnection::readMessage() {
    if (endedByAbort_) return endAsCancelled();
    int naks = 0;
    try {
        for (;;) {
            auto byte = nextByte();
            if (!byte) failTimedOut(KVRStringUtil::format("No reply to %s in time", expectedName_.c_str()));
            auto event = decoder_.feed(*byte);
            if (event.kind == KVRAbecsFrameCodec::Event::Kind::None) continue;
            if (event.kind == KVRAbecsFrameCodec::Event::Kind::Byte) continue;  // the ACK ahead of a frame, or noise
            if (event.kind == KVRAbecsFrameCodec::Event::Kind::Overlong) {
                KVRLoggingUtil::console("--------- dropped a frame longer than 1024 bytes");
                continue;
            }
            if (abecs_ && !event.crcMatches) {
                if (naks++ == kNaksPerReply) failTimedOut("The PIN pad's reply kept arriving damaged");
                writeControl(KVRAbecsFrameCodec::kNak);
                continue;
            }
            naks = 0;
            keepText(event.text);
            const std::string& text = event.text;
            if (KVRStringUtil::startsWith(text, "NTM")) {
                postNotification(text);
                KVRLoggingUtil::console(KVRStringUtil::format("--------- %s", forLog(text, false).c_str()));
                continue;
            }
            if (!KVRStringUtil::startsWith(text, expectedName_)) {
                KVRLoggingUtil::console(KVRStringUtil::format("--------- dropped %s while waiting for %s",
                                                              forLog(text, false).c_str(), expectedName_.c_str()));
                continue;
            }
            KVRLoggingUtil::console(KVRStringUtil::format("--------- %s", forLog(text, false).c_str()));
            finishCommand(false);
            return messageBuffer_.data();
        }
    } catch (const AbortSignal&) {
        cancelAndWaitForEot(kCancelAttempts);
        return endAsCancelled();
    } catch (...) {
        finishCommand(false);
        throw;
    }
}

void KVRBluetoothConnection::postNotification(const std::string& text) {
    std::string notification = KVRStringUtil::safeSubstr(KVRStringUtil::trim(text), 9);
    KVRNotificationCenter::defaultCenter().postNotification("KVRPinpadNTMMessage",
                                                            KVRDisplayText::utf8FromLatin1(notification));
}

// The text of the last frame, as the link's buffers keep it: at most 1023
// bytes in messageBuffer (NUL-terminated), the text and ETB in the read buffer.
void KVRBluetoothConnection::keepText(const std::string& text) {
    size_t kept = std::min(text.size(), kMessageLimit);
    std::memcpy(messageBuffer_.data(), text.data(), kept);
    messageBuffer_[kept] = '\0';
    dataRead_.assign(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(kept));
    dataRead_.push_back(KVRAbecsFrameCodec::kEtb);
}

// An aborted command ends as if the PIN pad had answered "cancelled".
const char* KVRBluetoothConnection::endAsCancelled() {
    keepText(expectedName_ + KVRStringUtil::format("%03d", KVRAbecsStatusCancelled));
    KVRLoggingUtil::console(KVRStringUtil::format("--------- %s (aborted)", messageBuffer_.data()));
    finishCommand(true);
    return messageBuffer_.data();
}

void KVRBluetoothConnection::finishCommand(bool aborted) {
    endedByAbort_ = false;
    {
        std::lock_guard lock(abortMutex_);
        inFlight_ = false;
        abortRequested_ = false;
        lastCommandAborted_ = aborted;
    }
    commandEnded_.notify_all();
}

// CAN makes the PIN pad drop what it is doing and answer EOT; bytes on their
// way meanwhile (a reply, a notification) are ignored, then dropped.
bool KVRBluetoothConnection::cancelAndWaitForEot(int attempts) {
    cancelling_ = true;
    bool answered = false;
    for (int attempt = 0; attempt < attempts && !answered; ++attempt) {
        writeControl(KVRAbecsFrameCodec::kCan);
        const auto until = Clock::now() + kEotWait;
        while (auto byte = nextByte(until)) {
            if (*byte == KVRAbecsFrameCodec::kEot) {
                answered = true;
                break;
            }
        }
    }
    cancelling_ = false;
    discardPendingInput();
    KVRLoggingUtil::printLog(answered ? "the PIN pad answered CAN with EOT" : "the PIN pad did not answer CAN");
    return answered;
}

bool KVRBluetoothConnection::abortCurrentCommand() {
    std::unique_lock lock(abortMutex_);
    if (!inFlight_) return false;
    abortRequested_ = true;
    // The calling thread notices within one wait slice; the CANs take at most 6 s.
    bool ended = commandEnded_.wait_for(lock, kCancelAttempts * kEotWait + 4s, [this] { return !inFlight_; });
    if (!ended) {
        abortRequested_ = false;
        return false;
    }
    return lastCommandAborted_;
}

uint8_t KVRBluetoothConnection::readByte() {
    auto byte = nextByte();
    if (!byte) failTimedOut("The PIN pad sent nothing in time");
    return *byte;
}

std::optional<uint8_t> KVRBluetoothConnection::nextByte(std::optional<Clock::time_point> deadline) {
    if (pushedBack_) {
        auto byte = pushedBack_;
        pushedBack_.reset();
        return byte;
    }
    if (bufferLength_ == 0 && !fillStagingBuffer(deadline)) return std::nullopt;
    uint8_t byte = buffer_[static_cast<size_t>(bufferPosition_++)];
    if (bufferPosition_ >= bufferLength_) bufferPosition_ = bufferLength_ = 0;
    return byte;
}

// The whole reply must arrive within the read time-out counted from the
// request (a line that keeps sending noise cannot hold it longer); on the
// ABECS link a command that needs no cardholder gets 10 s. Settings are read
// on every turn, so an application can set or change them while a read waits.
std::optional<KVRBluetoothConnection::Clock::time_point> KVRBluetoothConnection::replyDeadline() const {
    std::optional<Clock::time_point> deadline;
    if (auto timeout = readTimeout()) deadline = requestStart_ + *timeout;
    if (abecs_ && !blockingCommand_) {
        auto limit = requestStart_ + std::chrono::duration_cast<Clock::duration>(kNonBlockingReplyWait);
        deadline = deadline ? std::min(*deadline, limit) : limit;
    }
    return deadline;
}

void KVRBluetoothConnection::failTimedOut(const std::string& why) {
    throw KVRLinkException::timedOut(why);
}

bool KVRBluetoothConnection::fillStagingBuffer(std::optional<Clock::time_point> fixedDeadline) {
    WaitReports reports;
    for (;;) {
        if (abortRequested_ && inFlight_ && !cancelling_) throw AbortSignal{};
        sendQueuedWhenPossible();
        std::chrono::milliseconds slice = dataWritten_.empty() ? kWaitSlice : kPendingWriteSlice;
        auto deadline = fixedDeadline ? fixedDeadline : replyDeadline();
        if (deadline) {
            auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now());
            slice = std::clamp(left, std::chrono::milliseconds(0), slice);
        }
        if (waitForInput(slice, reports)) return true;
        if (deadline && Clock::now() >= *deadline) return false;
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

std::optional<KVRBluetoothConnection::Clock::duration> KVRBluetoothConnection::readTimeout() {
    double seconds = KVRApplicationInfo::numberForKey(KVRSettingsKeys::kPinpadReadTimeout).value_or(0);
    if (!(seconds > 0)) return std::nullopt;
    seconds = std::min(seconds, kLongestReadTimeoutSeconds);
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

void KVRBluetoothConnection::discardPendingInput() {
    long discarded = bufferLength_ - bufferPosition_;
    bufferLength_ = bufferPosition_ = 0;
    pushedBack_.reset();
    decoder_.reset();
    KVRInputStream* in = input();
    while (in && in->hasBytesAvailable()) {
        long count = in->read(buffer_.data(), kStreamReadSize);
        if (count <= 0) break;
        discarded += count;
    }
    bufferLength_ = bufferPosition_ = 0;
    if (discarded > 0) KVRLoggingUtil::printLog(KVRStringUtil::format("discarded %ld stale bytes", discarded));
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

uint16_t KVRBluetoothConnection::calculateCrc(const uint8_t* bytes, uint32_t length) {
    return KVRAbecsFrameCodec::crc(bytes, length);
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
