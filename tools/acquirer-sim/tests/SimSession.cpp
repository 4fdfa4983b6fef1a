#include "SimSession.h"
#include "testing/KVRFiles.h"

#include <pugixml.hpp>

#include <stdexcept>

using namespace std::chrono_literals;

SimSession::SimSession(std::vector<std::string> extraArguments, std::string state)
    : state_(state.empty() ? directory_.file("state") : std::move(state)) {
    std::vector<std::string> arguments{"--port", "0", "--state", state_};
    arguments.insert(arguments.end(), extraArguments.begin(), extraArguments.end());
    // The emulator echoes its request log on standard error; keep it out of the test output.
    process_ = std::make_unique<KVRProcess>(KOVRA_ACQUIRER_SIM_BINARY, arguments,
                                            KVRProcess::Options{.environment = {}, .captureErrors = true});
    const std::string ready = "kovra-acquirer-sim ready at ";
    auto line = process_->waitForLine(ready, 20s);
    auto ca = line ? process_->waitForLine("ca: ", 5s) : std::nullopt;
    if (!ca) throw std::runtime_error("the emulator did not get ready: " + process_->errors());
    readyLine_ = *line;
    baseUrl_ = line->substr(ready.size());
    caFile_ = ca->substr(4);
    client_ = std::make_unique<HttpsClient>(baseUrl_, caFile_);
}

std::vector<std::string> SimSession::requestLog() const {
    return KVRFiles::lines(state_ + "/requests.log");
}

KVRProcess::Result runSim(const std::vector<std::string>& arguments) {
    return KVRProcess::run(KOVRA_ACQUIRER_SIM_BINARY, arguments);
}

namespace {

pugi::xpath_node find(const std::string& xml, const std::string& xpath, pugi::xml_document& doc) {
    if (!doc.load_buffer(xml.data(), xml.size())) return {};
    return doc.select_node(xpath.c_str());
}

} // namespace

std::string valueAt(const std::string& xml, const std::string& xpath) {
    pugi::xml_document doc;
    pugi::xpath_node node = find(xml, xpath, doc);
    return node ? node.node().text().get() : "";
}

bool hasNode(const std::string& xml, const std::string& xpath) {
    pugi::xml_document doc;
    return static_cast<bool>(find(xml, xpath, doc));
}
