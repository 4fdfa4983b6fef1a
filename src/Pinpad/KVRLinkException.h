#pragma once

#include <kovra/KVRException.h>

#include <string>

/// The PIN pad link failed: there is no link ("PinpadNotConnected") or the PIN
/// pad stopped answering ("PinpadTimeout"). Its own type so that a flow can
/// tell a lost PIN pad from a programming error by catching it.
class KVRLinkException : public KVRException {
public:
    static KVRLinkException timedOut(std::string why) { return {"PinpadTimeout", std::move(why)}; }
    static KVRLinkException notConnected() {
        return {"PinpadNotConnected", "There is no PIN pad link: connect to the PIN pad first."};
    }

private:
    KVRLinkException(std::string name, std::string reason) : KVRException(std::move(name), std::move(reason)) {}
};
