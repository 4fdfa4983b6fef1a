#pragma once

#include <string>

/// PIN pad reply texts for scripted PIN pads, written field by field here so
/// that a fault in the library's reply reader is not mirrored.
namespace KVRPinpadReplies {

/// A card-read reply: a magnetic-stripe card with the given track 2 and PAN
/// (empty texts leave their areas blank).
std::string gcrReply(int status, const std::string& secondTrack, const std::string& pan);
/// The request's command name with the return code, nothing else.
std::string statusReply(const std::string& request, int status);
/// The application type a GCR request asks for (its 2 digits after the acquirer).
int gcrApplicationType(const std::string& request);

}  // namespace KVRPinpadReplies
