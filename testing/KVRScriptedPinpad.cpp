#include "testing/KVRScriptedPinpad.h"

#include "Pinpad/KVRBluetoothConnection.h"
#include "testing/KVRAbecsWire.h"

namespace {
using W = KVRAbecsWire;
constexpr uint8_t kEot = W::kEot, kAck = W::kAck, kDc3 = W::kDc3, kNak = W::kNak, kSyn = W::kSyn, kEtb = W::kEtb,
                  kCan = W::kCan;
constexpr auto kPollSlice = std::chrono::milliseconds(20);
}  // namespace

KVRScriptedPinpad::Handler KVRScriptedPinpad::okHandler() {
    return [](const std::string& request) { return std::vector<std::string>{request.substr(0, 3) + "000"}; };
}

KVRScriptedPinpad::KVRScriptedPinpad(Handler handler, Options options)
    : accessory_(std::make_shared<KVRMemoryAccessory>()),
      input_(accessory_->deviceInputStream()),
      output_(accessory_->deviceOutputStream()),
      handler_(std::move(handler)),
      options_(options) {
    thread_ = std::thread([this] { run(); });
}

KVRScriptedPinpad::KVRScriptedPinpad(std::shared_ptr<KVRInputStream> input, std::shared_ptr<KVROutputStream> output,
                                     Handler handler, Options options)
    : input_(std::move(input)), output_(std::move(output)), handler_(std::move(handler)), options_(options) {
    thread_ = std::thread([this] { run(); });
}

KVRScriptedPinpad::~KVRScriptedPinpad() {
    stop_ = true;
    thread_.join();
}

bool KVRScriptedPinpad::connectSharedLink() const {
    if (!accessory_) return false;
    auto link = KVRBluetoothConnection::sharedController();
    link->setupControllerForAccessory(accessory_, accessory_->protocolStrings().front());
    return link->openSession();
}

void KVRScriptedPinpad::setHandler(Handler handler) {
    std::lock_guard lock(mutex_);
    handler_ = std::move(handler);
}

std::vector<std::string> KVRScriptedPinpad::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<uint8_t> KVRScriptedPinpad::receivedBytes() const {
    std::lock_guard lock(mutex_);
    return received_;
}

size_t KVRScriptedPinpad::badCrcCount() const {
    std::lock_guard lock(mutex_);
    return badCrcs_;
}

bool KVRScriptedPinpad::waitForRequests(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return requests_.size() >= count; });
}

void KVRScriptedPinpad::run() {
    uint8_t chunk[4096];
    while (!stop_) {
        if (!input_->waitForBytesAvailable(kPollSlice)) continue;
        long count = input_->read(chunk, sizeof chunk);
        if (count <= 0) {
            // The library's side may be closed for a while (a pseudo-terminal with no slave open).
            std::this_thread::sleep_for(kPollSlice);
            continue;
        }
        {
            std::lock_guard lock(mutex_);
            received_.insert(received_.end(), chunk, chunk + count);
        }
        for (long i = 0; i < count; ++i) consume(chunk[i]);
    }
}

void KVRScriptedPinpad::consume(uint8_t byte) {
    Options options;
    {
        std::lock_guard lock(mutex_);
        options = options_;
    }
    switch (state_) {
    case State::Idle:
        if (byte == kSyn) {
            text_.clear();
            state_ = State::Text;
        } else if (byte == kCan) {
            writeAll({kEot});
        } else if (byte == kNak && options.abecs && !lastReply_.empty()) {
            send({lastReply_});
        }
        break;
    case State::Text:
        if (byte == kEtb) state_ = State::CrcHigh;
        else if (options.abecs && byte == kDc3) state_ = State::Escape;
        else text_.push_back(static_cast<char>(byte));
        break;
    case State::Escape:
        text_.push_back(static_cast<char>(byte - 0x20));
        state_ = State::Text;
        break;
    case State::CrcHigh:
        crcReceived_ = static_cast<uint16_t>(byte << 8);
        state_ = State::CrcLow;
        break;
    case State::CrcLow: {
        crcReceived_ |= byte;
        state_ = State::Idle;
        bool crcMatches = W::crc(text_ + W::kEtb) == crcReceived_;
        {
            std::lock_guard lock(mutex_);
            requests_.push_back(text_);
            if (!crcMatches) ++badCrcs_;
        }
        changed_.notify_all();
        if (options.abecs) {
            copiesSeen_ = text_ == lastRequest_ ? copiesSeen_ + 1 : 1;
            lastRequest_ = text_;
            if (!crcMatches || copiesSeen_ <= options.nakFirstCopies) {
                writeAll({kNak});
                break;
            }
            damagedLeft_ = options.damagedReplies;
        }
        if (options.abecs || options.acknowledgeOnce) writeAll({kAck});
        answer(text_);
        break;
    }
    }
}

void KVRScriptedPinpad::answer(const std::string& request) {
    Handler handler;
    {
        std::lock_guard lock(mutex_);
        handler = handler_;
    }
    send(handler ? handler(request) : std::vector<std::string>());
}

void KVRScriptedPinpad::send(const std::vector<std::string>& texts) {
    Options options;
    {
        std::lock_guard lock(mutex_);
        options = options_;
    }
    bool acknowledgeOnce = options.abecs || options.acknowledgeOnce;
    std::vector<uint8_t> pending;
    for (const auto& text : texts) {
        if (!acknowledgeOnce) pending.push_back(options.acknowledgement);
        bool damaged = options.wrongCrc;
        if (options.abecs && text.rfind("NTM", 0) != 0) {
            lastReply_ = text;
            if (damagedLeft_ > 0) {
                damaged = true;
                --damagedLeft_;
            }
        }
        auto bytes = W::frame(text, {damaged, options.straySyn, options.abecs});
        pending.insert(pending.end(), bytes.begin(), bytes.end());
        if (options.oneWritePerAnswer) continue;
        if (options.splitWrites) {
            size_t half = pending.size() / 2;
            writeAll({pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(half)});
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            writeAll({pending.begin() + static_cast<std::ptrdiff_t>(half), pending.end()});
        } else {
            writeAll(pending);
        }
        pending.clear();
    }
    if (!pending.empty()) writeAll(pending);
}

void KVRScriptedPinpad::writeAll(const std::vector<uint8_t>& bytes) {
    std::lock_guard lock(writeMutex_);
    size_t sent = 0;
    while (sent < bytes.size() && !stop_) {
        long count = output_->write(bytes.data() + sent, bytes.size() - sent);
        if (count < 0) return;
        if (count == 0) output_->waitForSpaceAvailable(kPollSlice);
        sent += static_cast<size_t>(count);
    }
}
