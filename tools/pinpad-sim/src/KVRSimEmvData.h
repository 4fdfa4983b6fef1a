#pragma once

#include "KVRSimCard.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The chip data the emulated card returns for a tag list: BER-TLV written
/// as upper-case hexadecimal text, in the order the tags were asked for.
/// Tags the card does not know are left out, as a card would.
class KVRSimEmvData {
public:
    /// Values of one chip exchange.
    struct Context {
        KVRSimCard card;
        std::string amount = "000000000000";  ///< twelve digits (tag 9F02)
        std::string cryptogramInformation;    ///< 80 on-line request, 40 approved, 00 declined (9F27)
        std::string cryptogram;               ///< sixteen hex digits (9F26)
        uint16_t transactionCounter = 0;      ///< 9F36
        std::string unpredictableNumber;      ///< eight hex digits (9F37)
        std::string date;                     ///< YYMMDD (9A)
        std::string terminalSerial;           ///< eight characters (9F1E)
        std::string verificationResults = "0000000000";  ///< 95
        std::string cvmResults = "420300";                ///< 9F34, enciphered PIN verified on-line
    };

    /// The tags a sale asks for when its list is empty.
    static const std::vector<std::string>& defaultTags();

    /// Splits a hex tag list into tags; throws KVRSimLayoutError when it is
    /// not a sequence of whole BER tags.
    static std::vector<std::string> parseTagList(const std::string& hex);

    static std::string build(const std::vector<std::string>& tags, const Context& context);

private:
    static std::optional<std::string> valueOf(const std::string& tag, const Context& context);
    static std::string encodeLength(size_t bytes);
};
