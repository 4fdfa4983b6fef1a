#include "KVRSimFrameReader.h"

#include "KVRSimCrc16.h"
#include "KVRSimFrame.h"

#include <cstdio>

KVRSimFrameReader::KVRSimFrameReader(FrameHandler onFrame, ControlHandler onControl)
    : onFrame_(std::move(onFrame)), onControl_(std::move(onControl)) {}

void KVRSimFrameReader::feed(std::string_view bytes) {
    for (char byte : bytes) {
        take(static_cast<unsigned char>(byte));
    }
}

void KVRSimFrameReader::reset() {
    state_ = State::Idle;
    text_.clear();
    overlong_ = false;
    malformed_.clear();
}

void KVRSimFrameReader::take(unsigned char byte) {
    auto is = [byte](char control) { return byte == static_cast<unsigned char>(control); };
    // The CRC bytes are not stuffed, so only there may SYN, ETB or CAN be plain values.
    if (state_ != State::CrcHigh && state_ != State::CrcLow) {
        if (is(KVRSimFrame::kSyn)) {
            reset();
            state_ = State::Text;
            return;
        }
        if (is(KVRSimFrame::kCan)) {
            reset();
            onControl_(byte);
            return;
        }
    }
    switch (state_) {
    case State::Idle:
        onControl_(byte);
        break;
    case State::Text:
        if (is(KVRSimFrame::kEtb)) {
            state_ = State::CrcHigh;
        } else if (is(KVRSimFrame::kDc3)) {
            state_ = State::Escape;
        } else {
            store(byte);
        }
        break;
    case State::Escape:
        state_ = State::Text;
        if (auto original = KVRSimFrame::unstuffed(byte)) {
            store(static_cast<unsigned char>(*original));
        } else if (is(KVRSimFrame::kEtb)) {
            malformed_ = "DC3 right before ETB";
            state_ = State::CrcHigh;
        } else if (malformed_.empty()) {
            char reason[48];
            std::snprintf(reason, sizeof reason, "DC3 followed by 0x%02X", byte);
            malformed_ = reason;
        }
        break;
    case State::CrcHigh:
        crcHigh_ = byte;
        state_ = State::CrcLow;
        break;
    case State::CrcLow:
        finish(byte);
        break;
    }
}

void KVRSimFrameReader::store(unsigned char byte) {
    if (text_.size() < kMaximumText) {
        text_.push_back(static_cast<char>(byte));
    } else {
        overlong_ = true;
    }
}

void KVRSimFrameReader::finish(unsigned char crcLow) {
    std::string covered = text_;
    covered.push_back(KVRSimFrame::kEtb);
    uint16_t received = static_cast<uint16_t>((crcHigh_ << 8) | crcLow);
    Frame frame{text_, received == KVRSimCrc16::compute(covered), overlong_, malformed_};
    reset();
    onFrame_(frame);
}
