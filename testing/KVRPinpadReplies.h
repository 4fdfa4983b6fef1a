#pragma once

#include <string>

/// PIN pad reply texts for scripted PIN pads, written field by field here so
/// that a fault in the library's reply reader is not mirrored.
namespace KVRPinpadReplies {

/// A card-read reply: a magnetic-stripe card with the given track 2 and PAN
/// (empty texts leave their areas blank).
std::string gcrReply(int status, const std::string& secondTrack, const std::string& pan);
/// What a card-read reply describes, field by field.
struct CardRead {
    int cardType = 3;  // 0 stripe, 3 chip, 6 contactless chip
    int applicationType = 1;
    int acquirer = 8;
    int recidx = 1;
    std::string firstTrack;
    std::string secondTrack = "4761739001010010=28122011234567890123";
    std::string thirdTrack;
    std::string pan = "4761739001010010";
    std::string applicationLabel = "VISA CREDITO";
    std::string serviceCode = "201";
    std::string cardHolderName = "MARIA DA SILVA";
    std::string expiration = "281231";  // yyMMdd
    /// After the fixed fields: what acquirer indexes 1 and 2 add.
    std::string acquirerData;
};
std::string gcrReply(int status, const CardRead& card);
/// The PIN pad's identity (texts space-filled to their width).
std::string ginReply(const std::string& name, const std::string& model, const std::string& serialNumber);
/// Chip processing: the decision, the on-line PIN and the EMV data for the host.
std::string gocReply(int status, int decision, const std::string& pinBlock, const std::string& keySerialNumber,
                     const std::string& emvData);
/// The end of chip processing: the card's decision.
std::string fncReply(int status, int decision);
/// A PIN entry: PIN block and key serial number.
std::string gpnReply(int status, const std::string& pinBlock, const std::string& keySerialNumber);
/// The request's command name with the return code, nothing else.
std::string statusReply(const std::string& request, int status);
/// The application type a GCR request asks for (its 2 digits after the acquirer).
int gcrApplicationType(const std::string& request);

}  // namespace KVRPinpadReplies
