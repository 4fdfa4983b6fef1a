#pragma once

#include <kovra/KVRError.h>

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

// Transport errors of the exchange, in NSURLErrorDomain.
inline constexpr long NSURLErrorUnknown = -1;
inline constexpr long NSURLErrorBadURL = -1000;
inline constexpr long NSURLErrorTimedOut = -1001;
inline constexpr long NSURLErrorUnsupportedURL = -1002;
inline constexpr long NSURLErrorCannotFindHost = -1003;
inline constexpr long NSURLErrorCannotConnectToHost = -1004;
inline constexpr long NSURLErrorNetworkConnectionLost = -1005;
inline constexpr long NSURLErrorNotConnectedToInternet = -1009;
inline constexpr long NSURLErrorDataLengthExceedsMaximum = -1103;
inline constexpr long NSURLErrorSecureConnectionFailed = -1200;

/// The one HTTPS exchange with the acquirer's hosts: a synchronous POST and
/// its reply, whatever the HTTP status. Certificates are always verified
/// (TLS 1.2 at least); "Kovra CA File" names a PEM bundle trusted for the
/// hosts and "Kovra Pinned Public Keys" (curl's "sha256//...;sha256//..."
/// list) pins their keys. Only https URLs are followed. Each thread keeps one
/// connection cache, so consecutive exchanges from a thread reuse their
/// connection. Replies above maximumReplyLength are refused. The installed
/// platform hooks' exchange, when there is one, carries every post instead.
class KVRCommunicationController {
public:
    static constexpr size_t maximumReplyLength = 16u << 20;
    static constexpr std::chrono::milliseconds xmlTimeout{50000};

    KVRCommunicationController() = delete;

    /// Posts the XML text as UTF-8 with exactly "Content-Length" and
    /// "Content-Type: text/xml". Returns the reply, or nothing when it is not
    /// valid UTF-8. On a transport failure: nothing with the error when `error`
    /// is given, otherwise "". Times out after 50 seconds.
    static std::optional<std::string> postXml(const std::string& xml, const std::string& url,
                                              std::optional<KVRError>* error = nullptr);
    /// Posts serialised JSON with "Accept" and "Content-Type" application/json
    /// and no time-out of its own. Returns the parsed reply, or nothing when
    /// it is not JSON or (with the error when `error` is given) the transport
    /// failed.
    static std::optional<nlohmann::json> postJSON(const std::string& body, const std::string& url,
                                                  std::optional<KVRError>* error = nullptr);
};
