#pragma once

#include <string>
#include <vector>

#include <curl/curl.h>

struct HttpReply {
    CURLcode error = CURLE_OK;
    long status = 0;
    std::string contentType;
    std::string body;
};

// A libcurl client that verifies the emulator's certificate with the given
// CA file and sends exactly the headers it is told to: the XML posts carry
// only Content-Type and Content-Length, as the library's do.
class HttpsClient {
public:
    HttpsClient(std::string baseUrl, std::string caFile);
    ~HttpsClient();
    HttpsClient(const HttpsClient&) = delete;
    HttpsClient& operator=(const HttpsClient&) = delete;

    HttpReply postXml(const std::string& path, const std::string& body, long timeoutMs = 10000);
    HttpReply postJson(const std::string& path, const std::string& body);
    // `headers` as "Name: value"; "Name:" removes a header libcurl would add.
    HttpReply send(const std::string& method, const std::string& path, const std::string& body,
                   const std::vector<std::string>& headers, long timeoutMs = 10000);

private:
    std::string baseUrl_;
    std::string caFile_;
    CURL* curl_;
};
