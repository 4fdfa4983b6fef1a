#pragma once

#include <initializer_list>
#include <string>

#include <pugixml.hpp>

namespace acqsim {

// Strict reading of request documents. Every failure throws RequestRejected
// naming the element path, so the request log says exactly what was wrong.
class XmlCheck {
public:
    // Parses `body`, requires the root `Document` carrying only
    // xmlns="`ns`", holding exactly one element `messageElement`, and no
    // prefixes or attributes anywhere below. Returns the message element.
    static pugi::xml_node openEnvelope(pugi::xml_document& doc, const std::string& body,
                                       const char* ns, const char* messageElement);

    // The child `name` of `parent`; rejects when it is missing.
    static pugi::xml_node child(pugi::xml_node parent, const char* name);

    // The text of the leaf child `name`; rejects when it is missing or has
    // child elements. An empty element gives "".
    static std::string text(pugi::xml_node parent, const char* name);

    // The text of `name` when present (a leaf), else `fallback`.
    static std::string optionalText(pugi::xml_node parent, const char* name, const std::string& fallback = "");

    // Requires the child elements of `parent` to appear in the order of
    // `names`, each at most once unless listed in `repeatable`, and no other
    // element or text among them.
    static void order(pugi::xml_node parent, std::initializer_list<const char*> names,
                      std::initializer_list<const char*> repeatable = {});

    // Requires `value` to be one of `allowed`.
    static void oneOf(pugi::xml_node parent, const char* name, const std::string& value,
                      std::initializer_list<const char*> allowed);

    // Rejects when `parent` has a child `name`.
    static void absent(pugi::xml_node parent, const char* name);

    // "AccptrAuthstnReq/AuthstnReq/Tx", for messages.
    static std::string pathOf(pugi::xml_node node);
    static std::string pathOf(pugi::xml_node parent, const char* name);
};

} // namespace acqsim
