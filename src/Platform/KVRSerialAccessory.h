#pragma once

#include "Platform/KVRAccessory.h"

#include <optional>
#include <string>
#include <vector>

/// A PIN pad on a serial device: USB CDC, Bluetooth RFCOMM or a
/// pseudo-terminal. The line is raw 8N1 at the speed the protocol string
/// names ("abecs-115200"), 19 200 bps when it names none.
class KVRSerialAccessory : public KVRAccessory {
public:
    static constexpr int kDefaultBaudRate = 19200;

    /// An empty name uses the path.
    explicit KVRSerialAccessory(std::string path, std::string name = {},
                                std::vector<std::string> protocolStrings = {"abecs-19200"});

    const std::string& path() const { return path_; }

    /// The speed a protocol string names after its last '-', or the default;
    /// nothing when it names a speed the line cannot take.
    static std::optional<int> baudRateForProtocol(const std::string& protocol);

protected:
    Streams connectStreams(const std::string& protocol) override;

private:
    std::string path_;
};
