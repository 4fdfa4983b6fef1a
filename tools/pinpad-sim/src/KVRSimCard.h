#pragma once

#include <optional>
#include <string>
#include <vector>

/// One test card the emulated reader can present: what the magnetic stripe
/// holds and, for chip cards, what the chip reports.
class KVRSimCard {
public:
    std::string name;            ///< catalogue name: "chip-visa", "stripe-pin"...
    int cardType = 0;            ///< 0 magnetic stripe, 3 EMV chip
    int recidx = 0;              ///< index of the matching AID record in the acquirer's table
    std::string pan;
    std::string cardholderName;  ///< "SURNAME/FIRST NAME" as on track 1
    std::string expiry;          ///< YYMM
    std::string serviceCode;     ///< three digits
    std::string applicationLabel;
    std::string aid;             ///< hex, chip cards only
    int panSequenceNumber = 0;
    std::string applicationInterchangeProfile;  ///< hex (tag 82)
    std::string issuerApplicationData;          ///< hex (tag 9F10)

    /// Cards by catalogue name; none for an unknown name.
    static std::optional<KVRSimCard> named(const std::string& name);
    static std::vector<std::string> names();

    bool isChip() const { return cardType == 3; }
    /// Track 1 without sentinels: B PAN ^ NAME ^ YYMM SSS discretionary.
    std::string firstTrack() const;
    /// Track 2 without sentinels: PAN = YYMM SSS discretionary (37 characters).
    std::string secondTrack() const;
    /// Last day of the expiry month as YYMMDD.
    std::string expirationDate() const;
};
