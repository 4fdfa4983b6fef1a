#pragma once

class KVRBaseCommandRequest;

/// What the command layer needs from the PIN pad link.
class KVRConnectionProtocol {
public:
    virtual ~KVRConnectionProtocol() = default;
    /// Frames the request and sends it; does not wait for the PIN pad.
    virtual void sendRequest(KVRBaseCommandRequest& request) = 0;
    /// The text of the next reply, valid until the next read.
    virtual const char* readMessage() = 0;
    virtual bool isDeviceConnected() = 0;
    /// From any thread: ends the command in flight as cancelled at the PIN
    /// pad; false when there was none to end.
    virtual bool abortCurrentCommand() { return false; }
};
