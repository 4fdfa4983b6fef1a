#include "support/KVRBenchPinpad.h"

#include "Pinpad/KVRBluetoothConnection.h"
#include "support/KVRReferenceCrc.h"

#include <chrono>
#include <mutex>
#include <thread>
#include <stdexcept>

namespace {
constexpr uint8_t kEot = 0x04;
constexpr uint8_t kAck = 0x06;
constexpr uint8_t kCan = 0x18;
constexpr uint8_t kSyn = 0x16;
constexpr uint8_t kEtb = 0x17;
constexpr auto kPollSlice = std::chrono::milliseconds(5);
}  // namespace

bool KVRBenchPinpad::RequestParser::consume(uint8_t byte) {
    switch (state_) {
    case State::Idle:
        if (byte == kSyn) {
            text_.clear();
            state_ = State::Text;
        }
        return false;
    case State::Text:
        if (byte == kEtb) state_ = State::CrcHigh;
        else text_.push_back(static_cast<char>(byte));
        return false;
    case State::CrcHigh:
        state_ = State::CrcLow;
        return false;
    case State::CrcLow:
        state_ = State::Idle;
        return true;
    }
    return false;
}

KVRBenchPinpad::KVRBenchPinpad() : accessory_(std::make_shared<KVRMemoryAccessory>()) {}

KVRBenchPinpad::~KVRBenchPinpad() { KVRBluetoothConnection::resetSharedController(); }

bool KVRBenchPinpad::connectSharedLink() const {
    auto link = KVRBluetoothConnection::sharedController();
    link->setupControllerForAccessory(accessory_, accessory_->protocolStrings().front());
    return link->openSession();
}

std::vector<uint8_t> KVRBenchPinpad::frame(const std::string& text) {
    std::vector<uint8_t> bytes;
    bytes.reserve(text.size() + 4);
    bytes.push_back(kSyn);
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.push_back(kEtb);
    uint16_t crc = KVRReferenceCrc::xmodem(bytes.data() + 1, bytes.size() - 1);
    bytes.push_back(static_cast<uint8_t>(crc >> 8));
    bytes.push_back(static_cast<uint8_t>(crc & 0xFF));
    return bytes;
}

std::vector<uint8_t> KVRBenchPinpad::replyBytes(const std::vector<std::string>& texts) {
    std::vector<uint8_t> bytes;
    for (const auto& text : texts) {
        bytes.push_back(kAck);
        auto framed = frame(text);
        bytes.insert(bytes.end(), framed.begin(), framed.end());
    }
    return bytes;
}

void KVRBenchPinpad::queue(const std::vector<uint8_t>& bytes) {
    size_t sent = 0;
    while (sent < bytes.size()) {
        long count = accessory_->deviceOutputStream()->write(bytes.data() + sent, bytes.size() - sent);
        if (count < 0) throw std::runtime_error("the library's side of the memory PIN pad is closed");
        sent += static_cast<size_t>(count);
    }
    bytesToLibrary_ += bytes.size();
}

size_t KVRBenchPinpad::readFromLibrary(const std::function<void(const std::string&)>& onRequest,
                                       const std::function<void(uint8_t)>& onControl) {
    uint8_t chunk[16384];
    size_t total = 0;
    auto& input = accessory_->deviceInputStream();
    while (input->hasBytesAvailable()) {
        long count = input->read(chunk, sizeof chunk);
        if (count <= 0) break;
        total += static_cast<size_t>(count);
        if (!onRequest) continue;
        for (long i = 0; i < count; ++i) {
            if (onControl && parser_.idle() && chunk[i] != kSyn) onControl(chunk[i]);
            else if (parser_.consume(chunk[i])) onRequest(parser_.text());
        }
    }
    bytesFromLibrary_ += total;
    return total;
}

KVRBenchPinpad::Script KVRBenchPinpad::learn(const Handler& handler, const std::function<void()>& flow, Line line) {
    startAnswering(handler, line);
    try {
        flow();
    } catch (...) {
        stopAnswering();
        throw;
    }
    return stopAnswering();
}

void KVRBenchPinpad::startAnswering(const Handler& handler, Line line) {
    {
        std::lock_guard lock(scriptMutex_);
        script_ = Script();
    }
    stopAnswering_ = false;
    device_ = std::thread([this, handler, line] {
        // The time `bytes` take on a line of the given rate.
        auto onTheLine = [&line](size_t bytes) {
            if (line.bitsPerSecond > 0)
                std::this_thread::sleep_for(
                    std::chrono::microseconds(bytes * 10 * 1000000 / static_cast<size_t>(line.bitsPerSecond)));
        };
        auto& input = accessory_->deviceInputStream();
        while (!stopAnswering_) {
            if (!input->waitForBytesAvailable(kPollSlice)) continue;
            readFromLibrary(
                [&](const std::string& request) {
                    auto replies = handler(request);
                    {
                        std::lock_guard lock(scriptMutex_);
                        script_.requests.push_back(request);
                        script_.replies.insert(script_.replies.end(), replies.begin(), replies.end());
                    }
                    onTheLine(request.size() + 4);
                    if (!line.abecs) {
                        auto bytes = replyBytes(replies);
                        onTheLine(bytes.size());
                        queue(bytes);
                        return;
                    }
                    onTheLine(1);
                    queue({kAck});
                    for (const auto& reply : replies) {
                        auto bytes = frame(reply);
                        onTheLine(bytes.size());
                        queue(bytes);
                    }
                },
                [&](uint8_t control) {
                    if (control == kCan) queue({kEot});
                });
        }
    });
}

KVRBenchPinpad::Script KVRBenchPinpad::stopAnswering() {
    stopAnswering_ = true;
    if (device_.joinable()) device_.join();
    std::lock_guard lock(scriptMutex_);
    return script_;
}

size_t KVRBenchPinpad::answeredRequests() {
    std::lock_guard lock(scriptMutex_);
    return script_.requests.size();
}
