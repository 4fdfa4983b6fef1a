#include "Host/KVRServiceEndpoint.h"

#include <kovra/KVRApplicationInfo.h>

#include "Platform/KVRSettingsKeys.h"

namespace {

std::string hostFor(const char* key, const char* fallback) {
    auto host = KVRApplicationInfo::stringForKey(key);
    return host && !host->empty() ? *host : fallback;
}

std::string url(const std::string& host, const char* path) { return "https://" + host + path; }

std::string tmsHost() {
    return KVRServiceEndpoint::isHolomogation() ? hostFor(KVRSettingsKeys::kTmsStagingHost, "tms.staging.kovra.com.br")
                                                : hostFor(KVRSettingsKeys::kTmsHost, "tms.kovra.com.br");
}

std::string authorizerHost() {
    return KVRServiceEndpoint::isHolomogation()
               ? hostFor(KVRSettingsKeys::kAuthorizerStagingHost, "authorizer.staging.kovra.com.br")
               : hostFor(KVRSettingsKeys::kAuthorizerHost, "authorizer.kovra.com.br");
}

}  // namespace

bool KVRServiceEndpoint::isHolomogation() { return KVRApplicationInfo::boolForKey(KVRSettingsKeys::kHomologation); }

std::string KVRServiceEndpoint::tmsUrl() { return url(tmsHost(), "/Report"); }

std::string KVRServiceEndpoint::authorizerUrl() { return url(authorizerHost(), "/Authorize"); }

std::string KVRServiceEndpoint::cancellationUrl() { return url(authorizerHost(), "/CancellationAdvice"); }

std::string KVRServiceEndpoint::mailUrl() {
    return url(hostFor(KVRSettingsKeys::kMailHost, "mail.kovra.com.br"), "/send");
}
