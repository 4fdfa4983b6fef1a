#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// How one reply travels back: notifications ahead of it, pauses, pieces,
/// deliberate damage, or no reply at all.
struct KVRSimDelivery {
    enum class HangUp { Never, InsteadOfReply, AfterReply };

    /// Notification texts shown to the cardholder before the reply, each sent
    /// as its own frame "NTM" + code + length + text.
    std::vector<std::string> notifications;
    int delayMs = 0;
    /// Pieces of the response frame, in bytes; the rest goes last. A single
    /// size with `repeatSplit` cuts the whole frame into pieces of that size.
    std::vector<size_t> split;
    bool repeatSplit = false;
    int splitDelayMs = 50;
    std::optional<size_t> straySynAfter;
    bool wrongCrc = false;
    bool silence = false;
    /// With silence or a hang-up instead of the reply: send the ACK first.
    bool ackFirst = false;
    HangUp hangUp = HangUp::Never;

    /// Adds what `later` asks for; its single values win.
    void merge(const KVRSimDelivery& later);
};
