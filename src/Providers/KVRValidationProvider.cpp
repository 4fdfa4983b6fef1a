#include <kovra/KVRMerchantModel.h>
#include <kovra/KVRTmsTableModel.h>
#include <kovra/KVRValidationProvider.h>

#include "Host/KVRServiceEndpoint.h"
#include "Pinpad/KVRPinpadController.h"
#include "Persistence/KVRRegisterFile.h"
#include "Platform/KVRSettingsKeys.h"
#include "Utils/KVRReachability.h"

#include <kovra/KVRApplicationInfo.h>

namespace {

// "https://host[:port]/path" -> "host[:port]".
std::string hostOfUrl(const std::string& url) {
    size_t start = url.find("://");
    start = start == std::string::npos ? 0 : start + 3;
    size_t end = url.find('/', start);
    return url.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

std::string probeHost() {
    auto host = KVRApplicationInfo::stringForKey(KVRSettingsKeys::kReachabilityHost);
    if (host && !host->empty()) return *host;
    return hostOfUrl(KVRServiceEndpoint::authorizerUrl());
}

}  // namespace

bool KVRValidationProvider::validateActivation() {
    auto code = KVRRegisterFile::kovraCode();
    if (code && !code->empty()) return true;
    return KVRMerchantModel::findFirst() != nullptr;
}

bool KVRValidationProvider::validatePinpadConnection() {
    auto connection = KVRPinpadController::sharedController().connection();
    return connection && connection->isDeviceConnected();
}

bool KVRValidationProvider::validateTablesDownloaded() { return KVRTmsTableModel::findFirst() != nullptr; }

bool KVRValidationProvider::validateConnectionToNetWork() {
    auto reachability = KVRReachability::reachabilityWithHostName(probeHost());
    if (!reachability) return false;
    auto status = reachability->currentReachabilityStatus();
    return status == ReachableViaWiFi || status == ReachableViaWWAN;
}
