#include "SimSession.h"

#include <pugixml.hpp>

SimSession::SimSession(std::vector<std::string> extraArguments) {
    process_ = std::make_unique<SimProcess>(directory_.path() / "state", std::move(extraArguments));
    client_ = std::make_unique<HttpsClient>(process_->baseUrl(), process_->caFile());
}

namespace {

pugi::xpath_node find(const std::string& xml, const char* xpath, pugi::xml_document& doc) {
    if (!doc.load_buffer(xml.data(), xml.size())) {
        return {};
    }
    return doc.select_node(xpath);
}

} // namespace

std::string valueAt(const std::string& xml, const char* xpath) {
    pugi::xml_document doc;
    pugi::xpath_node node = find(xml, xpath, doc);
    return node ? node.node().text().get() : "";
}

bool hasNode(const std::string& xml, const char* xpath) {
    pugi::xml_document doc;
    return static_cast<bool>(find(xml, xpath, doc));
}
