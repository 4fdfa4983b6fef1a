#include "support/KVRPinpadReplies.h"

#include <cstdio>

namespace KVRPinpadReplies {
namespace {

std::string digits(long value, int width) {
    char text[32];
    std::snprintf(text, sizeof text, "%0*ld", width, value);
    return text;
}

// A length-prefixed value in a space-filled area.
std::string area(const std::string& value, int lengthWidth, size_t areaWidth) {
    std::string filled = value.substr(0, areaWidth);
    filled.resize(areaWidth, ' ');
    return digits(static_cast<long>(value.size() < areaWidth ? value.size() : areaWidth), lengthWidth) + filled;
}

std::string blanks(size_t count) { return std::string(count, ' '); }

}  // namespace

std::string gcrReply(int status, const std::string& secondTrack, const std::string& pan) {
    std::string fields = "00"   // card type: magnetic stripe
                         "0"    // chip status
                         "00"   // application type
                         "08"   // acquirer
                         "03";  // record
    fields += area("", 2, 76);
    fields += area(secondTrack, 2, 37);
    fields += area("", 3, 104);
    fields += area(pan, 2, 19);
    fields += "00" + blanks(16) + "000" + blanks(26) + "281231" + blanks(29) + "076" + "000";
    return "GCR" + digits(status, 3) + digits(static_cast<long>(fields.size()), 3) + fields;
}

std::string statusReply(const std::string& request, int status) { return request.substr(0, 3) + digits(status, 3); }

int gcrApplicationType(const std::string& request) {
    // "GCR", block length (3), acquirer (2), application type (2).
    if (request.size() < 10) return -1;
    return std::stoi(request.substr(8, 2));
}

}  // namespace KVRPinpadReplies
