#include "testing/KVRScriptedPinpad.h"

#include "Pinpad/KVRBluetoothConnection.h"

namespace {
constexpr uint8_t kEot = 0x04;
constexpr uint8_t kAck = 0x06;
constexpr uint8_t kDc3 = 0x13;
constexpr uint8_t kNak = 0x15;
constexpr uint8_t kSyn = 0x16;
constexpr uint8_t kEtb = 0x17;
constexpr uint8_t kCan = 0x18;
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

void KVRScriptedPinpad::setOptions(Options options) {
    std::lock_guard lock(mutex_);
    options_ = options;
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

uint16_t KVRScriptedPinpad::crc16(const uint8_t* bytes, size_t length) {
    // CRC-16/XMODEM, bit by bit.
    uint16_t crc = 0;
    for (size_t i = 0; i < length; ++i) {
        crc ^= static_cast<uint16_t>(bytes[i]) << 8;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x8000) ? static_cast<uint16_t>((crc << 1) ^ 0x1021) : static_cast<uint16_t>(crc << 1);
    }
    return crc;
}

std::vector<uint8_t> KVRScriptedPinpad::frame(const std::string& text, bool wrongCrc, bool straySyn, bool stuffed) {
    std::vector<uint8_t> payload(text.begin(), text.end());
    payload.push_back(kEtb);
    uint16_t crc = crc16(payload.data(), payload.size());
    if (wrongCrc) crc ^= 0x5A5A;
    std::vector<uint8_t> bytes;
    bytes.reserve(payload.size() + 4);
    bytes.push_back(kSyn);
    for (size_t i = 0; i < payload.size(); ++i) {
        if (straySyn && i == text.size() / 2) bytes.push_back(kSyn);
        uint8_t byte = payload[i];
        if (stuffed && i < text.size() && (byte == kDc3 || byte == kSyn || byte == kEtb)) {
            bytes.push_back(kDc3);
            bytes.push_back(static_cast<uint8_t>(byte + 0x20));
        } else {
            bytes.push_back(byte);
        }
    }
    bytes.push_back(static_cast<uint8_t>(crc >> 8));
    bytes.push_back(static_cast<uint8_t>(crc & 0xFF));
    return bytes;
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
        std::vector<uint8_t> payload(text_.begin(), text_.end());
        payload.push_back(kEtb);
        bool crcMatches = crc16(payload.data(), payload.size()) == crcReceived_;
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
        auto bytes = frame(text, damaged, options.straySyn, options.abecs);
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

void KVRScriptedPinpad::sendRaw(const std::vector<uint8_t>& bytes) { writeAll(bytes); }

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
