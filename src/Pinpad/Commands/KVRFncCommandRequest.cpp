#include "Pinpad/Commands/KVRFncCommandRequest.h"

#include <algorithm>
#include <cctype>

bool KVRFncCommandRequest::isValidIssuerData(std::string_view hex) {
    return hex.size() % 2 == 0 && hex.size() <= kMaximumIssuerDataLength &&
           std::all_of(hex.begin(), hex.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

void KVRFncCommandRequest::getCommand(char* buffer) {
    auto& b = beginCommand(buffer, "FNC");
    b.startCommandBlock();
    b.appendInt(communicationStatus, 1);
    b.appendInt(0, 1);
    b.appendString(authorizationResponseCode, 2);
    b.appendInt(static_cast<int32_t>(issuerDataEmv.size() / 2), 3);
    b.appendString(issuerDataEmv, static_cast<int>(issuerDataEmv.size()));
    b.appendInt(0, 3);
    b.stopCommandBlock();

    // The tags are a block of their own: "055" "026" + 52 characters.
    b.startCommandBlock();
    b.appendInt(static_cast<int32_t>(tags.size() / 2), 3);
    b.appendString(tags, static_cast<int>(tags.size()));
    b.stopCommandBlock();
}
