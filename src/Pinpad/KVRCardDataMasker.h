#pragma once

#include <string>

/// Hides card data in the PIN pad traffic lines: track images, PAN and
/// cardholder name keep at most the PAN's last four digits; PIN blocks and
/// key serial numbers become asterisks. Texts keep their length, so the
/// layout stays readable.
class KVRCardDataMasker {
public:
    KVRCardDataMasker() = delete;

    /// A command text as sent.
    static std::string maskRequest(const std::string& text);
    /// A reply (or notification) text as received.
    static std::string maskResponse(const std::string& text);

    /// Everything but spaces and the last four digits of the first digit run
    /// (the PAN, in every track format) becomes '*'.
    static std::string maskTrack(const std::string& value);
    /// Digit runs long enough to be a PAN keep their last four digits.
    static std::string maskDigitRuns(const std::string& text);
};
