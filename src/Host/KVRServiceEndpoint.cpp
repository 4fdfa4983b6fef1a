#include "Host/KVRServiceEndpoint.h"

#include <kovra/KVRApplicationInfo.h>

namespace {

std::string hostFor(const char* key, const char* fallback) {
    auto host = KVRApplicationInfo::stringForKey(key);
    return host && !host->empty() ? *host : fallback;
}

std::string url(const std::string& host, const char* path) { return "https://" + host + path; }

std::string tmsHost() {
    return KVRServiceEndpoint::isHolomogation() ? hostFor("Kovra TMS Staging Host", "tms.staging.kovra.com.br")
                                                : hostFor("Kovra TMS Host", "tms.kovra.com.br");
}

std::string authorizerHost() {
    return KVRServiceEndpoint::isHolomogation()
               ? hostFor("Kovra Authorizer Staging Host", "authorizer.staging.kovra.com.br")
               : hostFor("Kovra Authorizer Host", "authorizer.kovra.com.br");
}

}  // namespace

bool KVRServiceEndpoint::isHolomogation() { return KVRApplicationInfo::boolForKey("Kovra Homologation"); }

std::string KVRServiceEndpoint::tmsUrl() { return url(tmsHost(), "/Report"); }

std::string KVRServiceEndpoint::authorizerUrl() { return url(authorizerHost(), "/Authorize"); }

std::string KVRServiceEndpoint::cancellationUrl() { return url(authorizerHost(), "/CancellationAdvice"); }

std::string KVRServiceEndpoint::mailUrl() { return url(hostFor("Kovra Mail Host", "mail.kovra.com.br"), "/send"); }
