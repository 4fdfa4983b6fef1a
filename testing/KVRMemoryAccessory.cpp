#include "testing/KVRMemoryAccessory.h"

#include "testing/KVRMemoryInputStream.h"
#include "testing/KVRMemoryOutputStream.h"

KVRMemoryAccessory::KVRMemoryAccessory(std::string name, std::vector<std::string> protocolStrings)
    : KVRAccessory(std::move(name), std::move(protocolStrings)),
      toDevice_(std::make_shared<KVRMemoryChannel>()),
      toLibrary_(std::make_shared<KVRMemoryChannel>()),
      deviceInput_(std::make_shared<KVRMemoryInputStream>(toDevice_)),
      deviceOutput_(std::make_shared<KVRMemoryOutputStream>(toLibrary_)) {
    deviceInput_->open();
    deviceOutput_->open();
}

void KVRMemoryAccessory::disconnect() { deviceOutput_->close(); }

void KVRMemoryAccessory::setLibraryWriteCapacity(size_t capacity) { toDevice_->setCapacity(capacity); }

KVRAccessory::Streams KVRMemoryAccessory::connectStreams(const std::string&) {
    if (refusesSessions_) return {};
    // The library closing its session must not end the channel: a later session reuses it.
    return {std::make_shared<KVRMemoryInputStream>(toLibrary_),
            std::make_shared<KVRMemoryOutputStream>(toDevice_, false)};
}
