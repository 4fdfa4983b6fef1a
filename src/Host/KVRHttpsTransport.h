#pragma once

#include <kovra/KVRError.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

/// libcurl underneath KVRCommunicationController: one HTTPS POST on the
/// calling thread's own curl handle (kept for the thread's life, so its
/// connections are reused), with certificate verification, TLS 1.2 at least,
/// the "Kovra CA File" bundle and the "Kovra Pinned Public Keys" pins.
/// Failures become NSURLErrorDomain errors.
class KVRHttpsTransport {
public:
    KVRHttpsTransport() = delete;

    /// `headers` are sent as given; a "Name:" entry removes a header curl would
    /// add. A zero time-out sets none. Returns the reply body whatever the
    /// HTTP status, or nothing with `error` set.
    static std::optional<std::string> post(const std::string& url, const std::string& body,
                                           const std::vector<std::string>& headers,
                                           std::chrono::milliseconds timeout, size_t maximumReplyLength,
                                           std::optional<KVRError>& error);

    /// The URL-loading error for a curl result code; `osErrno` tells a
    /// missing network from a refused connection.
    static KVRError errorForCurlCode(int curlCode, long osErrno, const std::string& url, const std::string& detail);
};
