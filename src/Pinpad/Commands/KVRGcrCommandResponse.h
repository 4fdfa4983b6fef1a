#pragma once

#include "Pinpad/Commands/KVRBaseCommandResponse.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

/// Card read reply: the card's tracks, PAN and chip application data.
/// Track and PAN fields hold at most their area's width (76, 37, 104, 19).
class KVRGcrCommandResponse : public KVRBaseCommandResponse {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    KVRGcrCommandResponse() = default;
    explicit KVRGcrCommandResponse(const char* response);

    /// The expiration in the first four characters ("yyMM") of a track piece.
    static std::optional<TimePoint> getDateFromtrack(const std::string& piece);

    /// 0 is a magnetic-stripe read.
    int32_t cardType = 0;
    int32_t statusChip = 0;
    int32_t appType = 0;
    int32_t acqidx = 0;
    int32_t recidx = 0;
    int32_t firstTrackLength = 0;
    std::string firstTrack;
    int32_t secondTrackLength = 0;
    std::string secondTrack;
    int32_t thirdTrackLength = 0;
    std::string thirdTrack;
    int32_t panLength = 0;
    std::string pan;
    int32_t panSequenceNumber = 0;
    std::string applicationLabel;  // 16
    int32_t serviceCode = 0;
    std::string cardHolderName;  // 26
    std::optional<TimePoint> expirationDate;
    std::string ruf;  // 29
    int32_t issuerCountryCode = 0;
    int32_t credentialNetworkLength = 0;
    // Acquirer 1 only.
    int32_t applicationIdentifierLength = 0;
    std::string applicationIdentifier;       // 32
    std::string applicationLabelCredential;  // 16
    std::string applicationPreferredName;    // 16
    // Acquirer 2 only.
    std::string applicationUsageControl;  // 10

private:
    std::string readArea(int32_t length, int32_t areaWidth);
    void readAcquirerData();
    void takeExpirationFromTracks();
};
