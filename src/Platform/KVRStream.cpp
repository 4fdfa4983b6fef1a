#include "Platform/KVRStream.h"

#include <climits>

namespace {
std::atomic<unsigned long> nextStreamNumber{1};
}

KVRStream::KVRStream() : number_(nextStreamNumber.fetch_add(1)) {}

KVRStream::~KVRStream() = default;

void KVRStream::open() {
    // A closed stream stays closed: its session has let go of the device.
    if (streamStatus() == KVRStreamStatus::NotOpen) setStatus(KVRStreamStatus::Open);
}

void KVRStream::close() { setStatus(KVRStreamStatus::Closed); }

bool KVRStream::isOpen() const {
    auto s = streamStatus();
    return s == KVRStreamStatus::Open || s == KVRStreamStatus::AtEnd;
}

int KVRStream::pollMilliseconds(std::chrono::milliseconds timeout) {
    if (timeout.count() <= 0) return 0;
    return timeout.count() > INT_MAX ? INT_MAX : static_cast<int>(timeout.count());
}
