#include "Pinpad/Commands/KVRGcrCommandResponse.h"

#include "Utils/KVRDateUtil.h"
#include "Utils/KVRStringUtil.h"

#include <algorithm>

KVRGcrCommandResponse::KVRGcrCommandResponse(const char* response) : KVRBaseCommandResponse(response) {
    commandLength = reader.readInt(3);
    cardType = reader.readInt(2);
    statusChip = reader.readInt(1);
    appType = reader.readInt(2);
    acqidx = reader.readInt(2);
    recidx = reader.readInt(2);
    firstTrackLength = reader.readInt(2);
    firstTrack = readArea(firstTrackLength, 76);
    secondTrackLength = reader.readInt(2);
    secondTrack = readArea(secondTrackLength, 37);
    thirdTrackLength = reader.readInt(3);
    thirdTrack = readArea(thirdTrackLength, 104);
    panLength = reader.readInt(2);
    pan = readArea(panLength, 19);
    panSequenceNumber = reader.readInt(2);
    applicationLabel = reader.readString(16);
    serviceCode = reader.readInt(3);
    cardHolderName = reader.readString(26);
    expirationDate = reader.readDate();
    ruf = reader.readString(29);
    issuerCountryCode = reader.readInt(3);
    credentialNetworkLength = reader.readInt(3);
    readAcquirerData();
    if (cardType == 0) takeExpirationFromTracks();
}

// A variable-length value inside a fixed area. A length outside the area
// (a damaged reply) is cut to it so the fields after the area stay aligned.
std::string KVRGcrCommandResponse::readArea(int32_t length, int32_t areaWidth) {
    int32_t used = std::clamp(length, 0, areaWidth);
    std::string value = reader.readString(used);
    reader.skip(areaWidth - used);
    return value;
}

void KVRGcrCommandResponse::readAcquirerData() {
    if (acqidx == 1) {
        applicationIdentifierLength = reader.readInt(2);
        applicationIdentifier = reader.readString(32);
        applicationLabelCredential = reader.readString(16);
        applicationPreferredName = reader.readString(16);
    } else if (acqidx == 2) {
        applicationUsageControl = reader.readString(10);
    }
}

void KVRGcrCommandResponse::takeExpirationFromTracks() {
    auto firstPieces = KVRStringUtil::split(firstTrack, "^");
    auto secondPieces = KVRStringUtil::split(secondTrack, "=");
    if (secondPieces.size() >= 2) expirationDate = getDateFromtrack(secondPieces[1]);
    else if (firstPieces.size() > 2) expirationDate = getDateFromtrack(firstPieces[2]);
}

std::optional<KVRGcrCommandResponse::TimePoint> KVRGcrCommandResponse::getDateFromtrack(const std::string& piece) {
    return KVRDateUtil::buildDateWithString(KVRStringUtil::safeSubstr(piece, 0, 4), "yyMM");
}
