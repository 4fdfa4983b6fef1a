#include "Host/KVRCommunicationController.h"

#include "Host/KVRHttpsTransport.h"
#include "Utils/KVRPlatformHooks.h"
#include "Utils/KVRStringUtil.h"

namespace {

std::string contentLength(const std::string& body) {
    return KVRStringUtil::format("Content-Length: %lu", static_cast<unsigned long>(body.size()));
}

// The transport step shared by both posts: the installed hooks' exchange
// when there is one, otherwise the network. On failure `error` holds the
// transport's error.
std::optional<std::string> exchange(const std::string& body, const std::string& url, const std::string& contentType,
                                    std::vector<std::string> headers, std::chrono::milliseconds timeout,
                                    std::optional<KVRError>& error) {
    auto hooks = KVRPlatformHooks::installed();
    if (hooks->exchange) {
        auto reply = hooks->exchange(KVRHttpRequest{url, body, contentType, std::move(headers), timeout}, error);
        if (!reply && !error) error = KVRError(NSURLErrorDomain, NSURLErrorUnknown);
        return reply;
    }
    return KVRHttpsTransport::post(url, body, headers, timeout, KVRCommunicationController::maximumReplyLength,
                                   error);
}

}  // namespace

std::optional<std::string> KVRCommunicationController::postXml(const std::string& xml, const std::string& url,
                                                               std::optional<KVRError>* error) {
    // "Accept:" and "Expect:" keep curl from adding headers of its own.
    std::vector<std::string> headers = {contentLength(xml), "Content-Type: text/xml", "Accept:", "Expect:"};
    std::optional<KVRError> transportError;
    auto reply = exchange(xml, url, "text/xml", headers, xmlTimeout, transportError);
    if (transportError) {
        if (error) {
            *error = transportError;
            return std::nullopt;
        }
        return std::string();
    }
    if (!KVRStringUtil::isValidUtf8(*reply)) return std::nullopt;
    return reply;
}

std::optional<nlohmann::json> KVRCommunicationController::postJSON(const std::string& body, const std::string& url,
                                                                   std::optional<KVRError>* error) {
    std::vector<std::string> headers = {"Accept: application/json", "Content-Type: application/json",
                                        contentLength(body), "Expect:"};
    std::optional<KVRError> transportError;
    auto reply = exchange(body, url, "application/json", headers, std::chrono::milliseconds(0), transportError);
    if (transportError) {
        if (error) *error = transportError;
        return std::nullopt;
    }
    nlohmann::json parsed = nlohmann::json::parse(*reply, nullptr, false);
    if (parsed.is_discarded()) return std::nullopt;
    return parsed;
}
