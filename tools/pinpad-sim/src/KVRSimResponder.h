#pragma once

#include "KVRSimOutcome.h"
#include "KVRSimTransport.h"

#include <chrono>
#include <deque>
#include <string>
#include <vector>

/// Puts outcomes on the wire in request order: NAK, or ACK then notification
/// frames and the response frame, shaped and paced as the delivery asks.
/// Pauses are kept as a plan that the server's loop works off, so that a CAN
/// can still abandon a command that is waiting for the cardholder.
class KVRSimResponder {
public:
    using Clock = std::chrono::steady_clock;

    explicit KVRSimResponder(KVRSimTransport& transport) : transport_(transport) {}

    void deliver(const KVRSimOutcome& outcome);
    /// Sends every step that is due. True when a due step asks to hang up;
    /// the rest of the plan is then dropped.
    bool sendDue();
    /// Milliseconds until the next step is due (0 when one is due), -1 when none waits.
    int msUntilNextStep() const;
    /// CAN from the host: everything pending is dropped and EOT answers at once.
    void abandon();
    /// NAK from the host: the last frame sent goes again, undamaged.
    void resendLast();
    /// The connection went away: nothing pending or sent is kept.
    void forget();

    /// The pieces a frame is written in.
    static std::vector<std::string> pieces(const std::string& frame, const KVRSimDelivery& delivery);
    /// "NTM", a return code of 000, the text's three-digit length, the text.
    static std::string notification(const std::string& text);

private:
    struct Step {
        int delayMs = 0;  ///< after the step before it has gone
        std::string bytes;
        std::string resendAs;  ///< a frame's undamaged bytes, kept for a NAK
        bool hangUp = false;
    };

    void add(Step step);

    KVRSimTransport& transport_;
    std::deque<Step> plan_;
    Clock::time_point headDue_;
    std::string lastFrame_;
};
