#pragma once

#include <string>

#include <pugixml.hpp>

namespace acqsim {

// Builds an answer document: declaration, `Document` in the given namespace,
// tab-indented, UTF-8. Elements holding only text stay on one line, so a
// client can cut blocks such as `<AidTbl>`...`</AidTbl>` out of the raw text.
class XmlReply {
public:
    explicit XmlReply(const std::string& ns);

    pugi::xml_node document() const { return document_; }
    std::string text() const;

    static pugi::xml_node element(pugi::xml_node parent, const char* name);
    static pugi::xml_node leaf(pugi::xml_node parent, const char* name, const std::string& value);

    // A rejection document (no business message inside): what a host answers
    // to a request it cannot process. `reasonCode` is an ISO 20022 rejection
    // reason ("PARS", "IMSG", "UNPR", ...).
    static std::string rejection(const std::string& reasonCode, const std::string& detail);

private:
    pugi::xml_document doc_;
    pugi::xml_node document_;
};

} // namespace acqsim
