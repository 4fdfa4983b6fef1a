#pragma once

#include "HttpsClient.h"
#include "SimProcess.h"
#include "TempDir.h"

#include <memory>
#include <string>
#include <vector>

// An emulator on a fresh state directory, with a client that trusts its CA.
class SimSession {
public:
    explicit SimSession(std::vector<std::string> extraArguments = {});

    SimProcess& process() { return *process_; }
    HttpsClient& client() { return *client_; }
    const std::filesystem::path& state() const { return directory_.path(); }

private:
    TempDir directory_;
    std::unique_ptr<SimProcess> process_;
    std::unique_ptr<HttpsClient> client_;
};

// Reading answers: XPath over the reply text (pugixml ignores the
// default namespace, so plain paths such as "/Document/AccptrAuthstnRspn"
// work). Empty string / false when the text is not XML or has no such node.
std::string valueAt(const std::string& xml, const char* xpath);
bool hasNode(const std::string& xml, const char* xpath);
