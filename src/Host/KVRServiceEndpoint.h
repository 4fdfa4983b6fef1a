#pragma once

#include <string>

/// The URLs of the acquirer's hosts. Host names come from the application's
/// information dictionary on every call ("Kovra TMS Host", "Kovra TMS Staging
/// Host", "Kovra Authorizer Host", "Kovra Authorizer Staging Host", "Kovra
/// Mail Host"; a value may carry a port, "127.0.0.1:8443"), so a change takes
/// effect at the next exchange. "Kovra Homologation" selects staging.
class KVRServiceEndpoint {
public:
    KVRServiceEndpoint() = delete;

    static bool isHolomogation();
    /// https://<terminal-management host>/Report
    static std::string tmsUrl();
    /// https://<authorisation host>/Authorize
    static std::string authorizerUrl();
    /// https://<authorisation host>/CancellationAdvice
    static std::string cancellationUrl();
    /// https://<mail host>/send; one host, no staging variant.
    static std::string mailUrl();
};
