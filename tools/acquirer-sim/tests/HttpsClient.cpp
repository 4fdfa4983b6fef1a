#include "HttpsClient.h"

#include <mutex>
#include <stdexcept>

namespace {

size_t collect(char* data, size_t size, size_t count, void* target) {
    static_cast<std::string*>(target)->append(data, size * count);
    return size * count;
}

} // namespace

HttpsClient::HttpsClient(std::string baseUrl, std::string caFile)
    : baseUrl_(std::move(baseUrl)), caFile_(std::move(caFile)) {
    static std::once_flag initialised;
    std::call_once(initialised, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    curl_ = curl_easy_init();
    if (curl_ == nullptr) {
        throw std::runtime_error("curl_easy_init failed");
    }
}

HttpsClient::~HttpsClient() {
    curl_easy_cleanup(curl_);
}

HttpReply HttpsClient::postXml(const std::string& path, const std::string& body, long timeoutMs) {
    return send("POST", path, body, {"Content-Type: text/xml", "Accept:", "Expect:"}, timeoutMs);
}

HttpReply HttpsClient::postJson(const std::string& path, const std::string& body) {
    return send("POST", path, body, {"Accept: application/json", "Content-Type: application/json", "Expect:"});
}

HttpReply HttpsClient::send(const std::string& method, const std::string& path, const std::string& body,
                            const std::vector<std::string>& headers, long timeoutMs) {
    HttpReply reply;
    curl_slist* list = nullptr;
    for (const std::string& header : headers) {
        list = curl_slist_append(list, header.c_str());
    }
    const std::string url = baseUrl_ + path;
    curl_easy_reset(curl_);
    curl_easy_setopt(curl_, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl_, CURLOPT_CAINFO, caFile_.c_str());
    curl_easy_setopt(curl_, CURLOPT_CUSTOMREQUEST, method.c_str());
    if (method != "GET") {
        curl_easy_setopt(curl_, CURLOPT_POSTFIELDS, body.data());
        curl_easy_setopt(curl_, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    }
    curl_easy_setopt(curl_, CURLOPT_HTTPHEADER, list);
    curl_easy_setopt(curl_, CURLOPT_TIMEOUT_MS, timeoutMs);
    curl_easy_setopt(curl_, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl_, CURLOPT_WRITEFUNCTION, collect);
    curl_easy_setopt(curl_, CURLOPT_WRITEDATA, &reply.body);
    reply.error = curl_easy_perform(curl_);
    curl_easy_getinfo(curl_, CURLINFO_RESPONSE_CODE, &reply.status);
    char* type = nullptr;
    if (curl_easy_getinfo(curl_, CURLINFO_CONTENT_TYPE, &type) == CURLE_OK && type != nullptr) {
        reply.contentType = type;
    }
    curl_slist_free_all(list);
    return reply;
}
