#include "Host/KVRHttpsTransport.h"

#include "Host/KVRCommunicationController.h"
#include "Platform/KVRSettingsKeys.h"
#include "Utils/KVRStringUtil.h"

#include <kovra/KVRApplicationInfo.h>
#include <kovra/KVRLoggingUtil.h>

#include <curl/curl.h>

#include <cerrno>
#include <mutex>

namespace {

// One easy handle per thread: curl_easy_reset between exchanges clears the
// options but keeps the connection cache, DNS cache and TLS sessions.
class ThreadHandle {
public:
    ThreadHandle() {
        static std::once_flag globalInit;
        std::call_once(globalInit, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
        handle_ = curl_easy_init();
    }
    ~ThreadHandle() {
        if (handle_) curl_easy_cleanup(handle_);
    }
    ThreadHandle(const ThreadHandle&) = delete;
    ThreadHandle& operator=(const ThreadHandle&) = delete;
    CURL* get() const { return handle_; }

private:
    CURL* handle_ = nullptr;
};

CURL* threadHandle() {
    thread_local ThreadHandle handle;
    return handle.get();
}

class HeaderList {
public:
    explicit HeaderList(const std::vector<std::string>& headers) {
        for (const auto& h : headers) list_ = curl_slist_append(list_, h.c_str());
    }
    ~HeaderList() { curl_slist_free_all(list_); }
    HeaderList(const HeaderList&) = delete;
    HeaderList& operator=(const HeaderList&) = delete;
    curl_slist* get() const { return list_; }

private:
    curl_slist* list_ = nullptr;
};

struct Reply {
    std::string body;
    size_t limit = 0;
    bool tooLarge = false;
};

size_t collect(char* data, size_t size, size_t count, void* user) {
    auto* reply = static_cast<Reply*>(user);
    size_t length = size * count;
    if (reply->body.size() + length > reply->limit) {
        reply->tooLarge = true;
        return 0;  // makes curl abort the transfer
    }
    reply->body.append(data, length);
    return length;
}

void applySecurity(CURL* curl) {
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "https");
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(curl, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    // curl copies string options, so the temporaries may go.
    if (auto ca = KVRApplicationInfo::stringForKey(KVRSettingsKeys::kCaFile); ca && !ca->empty()) {
        curl_easy_setopt(curl, CURLOPT_CAINFO, ca->c_str());
    }
    if (auto pins = KVRApplicationInfo::stringForKey(KVRSettingsKeys::kPinnedPublicKeys); pins && !pins->empty()) {
        curl_easy_setopt(curl, CURLOPT_PINNEDPUBLICKEY, pins->c_str());
    }
}

bool isTlsFailure(CURLcode code) {
    switch (code) {
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CERTPROBLEM:
        case CURLE_SSL_CIPHER:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
        case CURLE_SSL_ISSUER_ERROR:
        case CURLE_SSL_CRL_BADFILE:
        case CURLE_SSL_INVALIDCERTSTATUS:
        case CURLE_SSL_ENGINE_NOTFOUND:
        case CURLE_SSL_ENGINE_SETFAILED:
        case CURLE_SSL_ENGINE_INITFAILED:
        case CURLE_SSL_SHUTDOWN_FAILED:
        case CURLE_USE_SSL_FAILED:
            return true;
        default:
            return false;
    }
}

long urlErrorCode(CURLcode code, long osErrno) {
    if (isTlsFailure(code)) return NSURLErrorSecureConnectionFailed;
    switch (code) {
        case CURLE_OPERATION_TIMEDOUT: return NSURLErrorTimedOut;
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY: return NSURLErrorCannotFindHost;
        case CURLE_COULDNT_CONNECT:
            return osErrno == ENETUNREACH || osErrno == ENETDOWN ? NSURLErrorNotConnectedToInternet
                                                                 : NSURLErrorCannotConnectToHost;
        case CURLE_FILESIZE_EXCEEDED: return NSURLErrorDataLengthExceedsMaximum;
        case CURLE_UNSUPPORTED_PROTOCOL: return NSURLErrorUnsupportedURL;
        case CURLE_URL_MALFORMAT: return NSURLErrorBadURL;
        case CURLE_GOT_NOTHING:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        case CURLE_PARTIAL_FILE: return NSURLErrorNetworkConnectionLost;
        default: return NSURLErrorUnknown;
    }
}

const char* descriptionFor(long urlCode) {
    switch (urlCode) {
        case NSURLErrorTimedOut: return "The request timed out.";
        case NSURLErrorCannotFindHost: return "A server with the specified hostname could not be found.";
        case NSURLErrorCannotConnectToHost: return "Could not connect to the server.";
        case NSURLErrorNotConnectedToInternet: return "The Internet connection appears to be offline.";
        case NSURLErrorSecureConnectionFailed:
            return "An SSL error has occurred and a secure connection to the server cannot be made.";
        case NSURLErrorDataLengthExceedsMaximum: return "The server's reply exceeds the maximum length of 16 MiB.";
        case NSURLErrorUnsupportedURL: return "unsupported URL";
        case NSURLErrorBadURL: return "bad URL";
        case NSURLErrorNetworkConnectionLost: return "The network connection was lost.";
        default: return "An unknown error occurred.";
    }
}

}  // namespace

KVRError KVRHttpsTransport::errorForCurlCode(int curlCode, long osErrno, const std::string& url,
                                             const std::string& detail) {
    long code = urlErrorCode(static_cast<CURLcode>(curlCode), osErrno);
    KVRError::UserInfo info = {{NSLocalizedDescriptionKey, descriptionFor(code)},
                               {"NSErrorFailingURLStringKey", url}};
    if (!detail.empty()) info["NSUnderlyingError"] = detail;
    return KVRError(NSURLErrorDomain, code, std::move(info));
}

std::optional<std::string> KVRHttpsTransport::post(const std::string& url, const std::string& body,
                                                   const std::vector<std::string>& headers,
                                                   std::chrono::milliseconds timeout, size_t maximumReplyLength,
                                                   std::optional<KVRError>& error) {
    CURL* curl = threadHandle();
    if (!curl) {
        error = errorForCurlCode(CURLE_FAILED_INIT, 0, url, "curl_easy_init failed");
        return std::nullopt;
    }
    curl_easy_reset(curl);
    // Leaves no pointer into this frame behind in the handle.
    struct ResetAfterUse {
        CURL* curl;
        ~ResetAfterUse() { curl_easy_reset(curl); }
    } resetAfterUse{curl};
    HeaderList headerList(headers);
    Reply reply;
    reply.limit = maximumReplyLength;
    char detail[CURL_ERROR_SIZE] = {0};

    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headerList.get());
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply);
    curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maximumReplyLength));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeout.count()));
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, detail);
    applySecurity(curl);

    CURLcode result = curl_easy_perform(curl);
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    if (result != CURLE_OK) {
        long osErrno = 0;
        curl_easy_getinfo(curl, CURLINFO_OS_ERRNO, &osErrno);
        int code = reply.tooLarge ? CURLE_FILESIZE_EXCEEDED : result;
        error = errorForCurlCode(code, osErrno, url, detail[0] ? detail : curl_easy_strerror(result));
        KVRLoggingUtil::printLog(KVRStringUtil::format("POST %s failed: %s (%ld)", url.c_str(),
                                                       curl_easy_strerror(result), error->code()));
        return std::nullopt;
    }
    KVRLoggingUtil::printLog(KVRStringUtil::format("POST %s: %lu bytes sent, status %ld, %lu bytes received",
                                                   url.c_str(), static_cast<unsigned long>(body.size()), status,
                                                   static_cast<unsigned long>(reply.body.size())));
    return std::move(reply.body);
}
