#include "KVRSimFrameReader.h"

#include "KVRSimCrc16.h"
#include "KVRSimFrame.h"

KVRSimFrameReader::KVRSimFrameReader(FrameHandler onFrame, NoiseHandler onNoise)
    : onFrame_(std::move(onFrame)), onNoise_(std::move(onNoise)) {}

void KVRSimFrameReader::feed(std::string_view bytes) {
    for (char byte : bytes) {
        take(static_cast<unsigned char>(byte));
    }
}

void KVRSimFrameReader::reset() {
    state_ = State::Idle;
    text_.clear();
    overlong_ = false;
}

void KVRSimFrameReader::take(unsigned char byte) {
    switch (state_) {
    case State::Idle:
        if (byte == static_cast<unsigned char>(KVRSimFrame::kSyn)) {
            reset();
            state_ = State::Text;
        } else {
            onNoise_(byte);
        }
        break;
    case State::Text:
        if (byte == static_cast<unsigned char>(KVRSimFrame::kSyn)) {
            reset();
            state_ = State::Text;
        } else if (byte == static_cast<unsigned char>(KVRSimFrame::kEtb)) {
            state_ = State::CrcHigh;
        } else if (text_.size() < kMaximumText) {
            text_.push_back(static_cast<char>(byte));
        } else {
            overlong_ = true;
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

void KVRSimFrameReader::finish(unsigned char crcLow) {
    std::string covered = text_;
    covered.push_back(KVRSimFrame::kEtb);
    uint16_t received = static_cast<uint16_t>((crcHigh_ << 8) | crcLow);
    Frame frame{text_, received == KVRSimCrc16::compute(covered), overlong_};
    reset();
    onFrame_(frame);
}
