#include "XmlReply.h"

#include "SimTime.h"

#include <sstream>

namespace acqsim {

XmlReply::XmlReply(const std::string& ns) {
    pugi::xml_node declaration = doc_.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    document_ = doc_.append_child("Document");
    document_.append_attribute("xmlns") = ns.c_str();
}

std::string XmlReply::text() const {
    std::ostringstream out;
    doc_.save(out, "\t", pugi::format_indent, pugi::encoding_utf8);
    return out.str();
}

pugi::xml_node XmlReply::element(pugi::xml_node parent, const char* name) {
    return parent.append_child(name);
}

pugi::xml_node XmlReply::leaf(pugi::xml_node parent, const char* name, const std::string& value) {
    pugi::xml_node node = parent.append_child(name);
    node.text().set(value.c_str());
    return node;
}

std::string XmlReply::rejection(const std::string& reasonCode, const std::string& detail) {
    XmlReply reply("urn:AcceptorRejectionV02.1");
    pugi::xml_node message = element(reply.document(), "AccptrRjctn");
    pugi::xml_node header = element(message, "Hdr");
    leaf(header, "MsgFctn", "RJCT");
    leaf(header, "PrtcolVrsn", "2.0");
    leaf(header, "CreDtTm", SimTime::localDateTime());
    pugi::xml_node reject = element(message, "Rjct");
    leaf(reject, "RjctRsn", reasonCode);
    leaf(reject, "AddtlInf", detail);
    return reply.text();
}

} // namespace acqsim
