#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The byte pipe to the host: a pseudo-terminal or a loopback TCP port.
class KVRSimTransport {
public:
    struct Received {
        std::string bytes;
        /// The peer went away or a new one arrived: a partial frame is void.
        bool peerChanged = false;
    };

    virtual ~KVRSimTransport() = default;

    /// Makes the endpoint ready and returns its name for the ready line.
    /// Throws std::system_error when it cannot.
    virtual std::string open() = 0;
    /// The descriptor to wait on for the next receive().
    virtual int waitDescriptor() const = 0;
    /// Called when waitDescriptor() is readable.
    virtual Received receive() = 0;
    /// Writes everything, or drops the peer if it is gone.
    virtual void send(std::string_view bytes) = 0;
    /// Drops the peer. Returns the new endpoint when the transport had to be
    /// opened again for the next peer.
    virtual std::optional<std::string> hangUp() = 0;
    virtual void close() = 0;
};
