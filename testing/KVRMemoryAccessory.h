#pragma once

#include "Platform/KVRAccessory.h"
#include "testing/KVRMemoryChannel.h"

#include <atomic>
#include <memory>

/// A PIN pad that lives in memory, for tests: the other side of the link is
/// reached through the device streams. Sessions may be closed and opened again.
class KVRMemoryAccessory : public KVRAccessory {
public:
    explicit KVRMemoryAccessory(std::string name = "Memory PIN pad", std::vector<std::string> protocolStrings = {"abecs"});

    /// The PIN pad's side, already open: reads what the library writes...
    const std::shared_ptr<KVRInputStream>& deviceInputStream() const { return deviceInput_; }
    /// ...and writes what the library reads. Closing it is the PIN pad going away.
    const std::shared_ptr<KVROutputStream>& deviceOutputStream() const { return deviceOutput_; }
    /// The library's input reaches its end once it has read what was sent.
    void disconnect();
    /// Limits the bytes the library may have in flight to the PIN pad (partial writes).
    void setLibraryWriteCapacity(size_t capacity);
    /// Makes session creation fail, like a device that is listed but not reachable.
    void setRefusesSessions(bool refuses) { refusesSessions_ = refuses; }

protected:
    Streams connectStreams(const std::string& protocol) override;

private:
    std::shared_ptr<KVRMemoryChannel> toDevice_;
    std::shared_ptr<KVRMemoryChannel> toLibrary_;
    std::shared_ptr<KVRInputStream> deviceInput_;
    std::shared_ptr<KVROutputStream> deviceOutput_;
    std::atomic<bool> refusesSessions_{false};
};
