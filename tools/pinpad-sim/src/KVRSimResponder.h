#pragma once

#include "KVRSimOutcome.h"
#include "KVRSimTransport.h"

#include <string>
#include <vector>

/// Puts an outcome on the wire: NAK, or ACK then notification frames (each
/// after its own ACK, since the host drops one byte before every frame it
/// reads) and the response frame, shaped as the delivery asks.
class KVRSimResponder {
public:
    enum class Next { Serve, HangUp };

    explicit KVRSimResponder(KVRSimTransport& transport) : transport_(transport) {}

    Next deliver(const KVRSimOutcome& outcome);

    /// The pieces a frame is written in.
    static std::vector<std::string> pieces(const std::string& frame, const KVRSimDelivery& delivery);
    /// "NTM", a return code of 000, the text's three-digit length, the text.
    static std::string notification(const std::string& text);

private:
    static void pause(int milliseconds);

    KVRSimTransport& transport_;
};
