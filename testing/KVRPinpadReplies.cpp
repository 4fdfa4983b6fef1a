#include "testing/KVRPinpadReplies.h"

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

// A text left-aligned in a space-filled field.
std::string field(const std::string& value, size_t width) {
    std::string filled = value.substr(0, width);
    filled.resize(width, ' ');
    return filled;
}

std::string reply(const std::string& name, int status, const std::string& fields) {
    return name + digits(status, 3) + digits(static_cast<long>(fields.size()), 3) + fields;
}

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

std::string gcrReply(int status, const CardRead& card) {
    std::string fields = digits(card.cardType, 2) + "0" + digits(card.applicationType, 2) + digits(card.acquirer, 2) +
                         digits(card.recidx, 2);
    fields += area(card.firstTrack, 2, 76);
    fields += area(card.secondTrack, 2, 37);
    fields += area(card.thirdTrack, 3, 104);
    fields += area(card.pan, 2, 19);
    fields += "00" + field(card.applicationLabel, 16) + field(card.serviceCode, 3) + field(card.cardHolderName, 26) +
              card.expiration + blanks(29) + "076" + "000" + card.acquirerData;
    return reply("GCR", status, fields);
}

std::string ginReply(const std::string& name, const std::string& model, const std::string& serialNumber) {
    return reply("GIN", 0,
                 field(name, 20) + field(model, 19) + "0" + field("1.00", 20) + "2.12" + field("1.0", 16) +
                     field(serialNumber, 20));
}

std::string gocReply(int status, int decision, const std::string& pinBlock, const std::string& keySerialNumber,
                     const std::string& emvData) {
    std::string fields = digits(decision, 1) + "0" + "0" + "0" + "0" + (pinBlock.empty() ? "0" : "1") +
                         field(pinBlock, 16) + field(keySerialNumber, 20) +
                         digits(static_cast<long>(emvData.size() / 2), 3) + emvData + "000";
    return reply("GOC", status, fields);
}

std::string fncReply(int status, int decision) { return reply("FNC", status, digits(decision, 1) + "000" + "00" + "000"); }

std::string gpnReply(int status, const std::string& pinBlock, const std::string& keySerialNumber) {
    return reply("GPN", status, field(pinBlock, 16) + field(keySerialNumber, 20));
}

std::string statusReply(const std::string& request, int status) { return request.substr(0, 3) + digits(status, 3); }

int gcrApplicationType(const std::string& request) {
    // "GCR", block length (3), acquirer (2), application type (2).
    if (request.size() < 10) return -1;
    return std::stoi(request.substr(8, 2));
}

}  // namespace KVRPinpadReplies
