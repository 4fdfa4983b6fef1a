#pragma once

#include "HttpsClient.h"

#include "testing/KVRProcess.h"
#include "testing/KVRTempDirectory.h"

#include <memory>
#include <string>
#include <vector>

// kovra-acquirer-sim on --port 0 over a state directory (a fresh one unless
// given), started when its two ready lines are out, with a client that
// trusts its CA.
class SimSession {
public:
    explicit SimSession(std::vector<std::string> extraArguments = {}, std::string state = "");

    HttpsClient& client() { return *client_; }
    const std::string& state() const { return state_; }
    const std::string& readyLine() const { return readyLine_; }
    const std::string& baseUrl() const { return baseUrl_; }
    const std::string& caFile() const { return caFile_; }
    // The request log's lines so far.
    std::vector<std::string> requestLog() const;
    // SIGTERM; the exit status.
    int stop() { return process_->stop(std::chrono::seconds(10)); }

private:
    KVRTempDirectory directory_;
    std::string state_;
    std::unique_ptr<KVRProcess> process_;
    std::string readyLine_;
    std::string baseUrl_;
    std::string caFile_;
    std::unique_ptr<HttpsClient> client_;
};

// Runs the binary to its end with the arguments.
KVRProcess::Result runSim(const std::vector<std::string>& arguments);

// Reading answers: XPath over the reply text (pugixml ignores the
// default namespace, so plain paths such as "/Document/AccptrAuthstnRspn"
// work). Empty string / false when the text is not XML or has no such node.
std::string valueAt(const std::string& xml, const std::string& xpath);
bool hasNode(const std::string& xml, const std::string& xpath);
