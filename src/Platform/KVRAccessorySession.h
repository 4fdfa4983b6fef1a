#pragma once

#include "Platform/KVRInputStream.h"
#include "Platform/KVROutputStream.h"

#include <memory>
#include <string>

/// An open connection to an accessory for one protocol: its two streams.
/// Destroying the session closes both.
class KVRAccessorySession {
public:
    KVRAccessorySession(std::string protocolString, std::shared_ptr<KVRInputStream> inputStream,
                        std::shared_ptr<KVROutputStream> outputStream);
    ~KVRAccessorySession();
    KVRAccessorySession(const KVRAccessorySession&) = delete;
    KVRAccessorySession& operator=(const KVRAccessorySession&) = delete;

    const std::string& protocolString() const { return protocolString_; }
    const std::shared_ptr<KVRInputStream>& inputStream() const { return inputStream_; }
    const std::shared_ptr<KVROutputStream>& outputStream() const { return outputStream_; }

private:
    std::string protocolString_;
    std::shared_ptr<KVRInputStream> inputStream_;
    std::shared_ptr<KVROutputStream> outputStream_;
};
