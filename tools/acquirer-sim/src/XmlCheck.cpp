#include "XmlCheck.h"

#include "CardDataMask.h"

#include "RequestRejected.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace acqsim {
namespace {

[[noreturn]] void reject(const std::string& detail) {
    throw RequestRejected("IMSG", detail);
}

bool contains(std::initializer_list<const char*> names, const char* name) {
    return std::any_of(names.begin(), names.end(), [name](const char* n) { return std::strcmp(n, name) == 0; });
}

std::string joined(const std::vector<const char*>& names) {
    std::string list;
    for (const char* n : names) {
        list += (list.empty() ? "" : ", ") + std::string(n);
    }
    return list;
}

void checkPlainTree(pugi::xml_node node) {
    for (pugi::xml_node child : node.children()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        if (std::strchr(child.name(), ':') != nullptr) {
            reject("prefixed element " + XmlCheck::pathOf(child));
        }
        if (child.first_attribute()) {
            reject("attribute on " + XmlCheck::pathOf(child));
        }
        checkPlainTree(child);
    }
}

} // namespace

pugi::xml_node XmlCheck::openEnvelope(pugi::xml_document& doc, const std::string& body,
                                      const char* ns, const char* messageElement) {
    pugi::xml_parse_result parsed = doc.load_buffer(body.data(), body.size(), pugi::parse_default, pugi::encoding_utf8);
    if (!parsed) {
        throw RequestRejected("PARS", std::string("not well-formed XML: ") + parsed.description());
    }
    pugi::xml_node root = doc.document_element();
    if (std::strcmp(root.name(), "Document") != 0) {
        reject(std::string("root element is ") + root.name() + ", not Document");
    }
    pugi::xml_attribute xmlns = root.attribute("xmlns");
    if (!xmlns || std::strcmp(xmlns.value(), ns) != 0) {
        reject(std::string("Document namespace is \"") + xmlns.value() + "\", not \"" + ns + "\"");
    }
    if (xmlns.next_attribute() || root.first_attribute() != xmlns) {
        reject("Document carries attributes besides xmlns");
    }
    checkPlainTree(root);
    order(root, {messageElement});
    return child(root, messageElement);
}

pugi::xml_node XmlCheck::child(pugi::xml_node parent, const char* name) {
    pugi::xml_node found = parent.child(name);
    if (!found) {
        reject("missing " + pathOf(parent, name));
    }
    return found;
}

std::string XmlCheck::text(pugi::xml_node parent, const char* name) {
    pugi::xml_node leaf = child(parent, name);
    if (leaf.find_child([](pugi::xml_node n) { return n.type() == pugi::node_element; })) {
        reject(pathOf(leaf) + " holds elements where text belongs");
    }
    return leaf.text().get();
}

std::string XmlCheck::optionalText(pugi::xml_node parent, const char* name, const std::string& fallback) {
    return parent.child(name) ? text(parent, name) : fallback;
}

void XmlCheck::order(pugi::xml_node parent, std::initializer_list<const char*> names,
                     std::initializer_list<const char*> repeatable) {
    std::vector<const char*> allowed(names);
    size_t position = 0;
    bool seenAtPosition = false;
    for (pugi::xml_node node : parent.children()) {
        if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            reject("text inside " + pathOf(parent));
        }
        if (node.type() != pugi::node_element) {
            continue;
        }
        auto it = std::find_if(allowed.begin(), allowed.end(),
                               [&](const char* n) { return std::strcmp(n, node.name()) == 0; });
        if (it == allowed.end()) {
            reject("unexpected element " + pathOf(node));
        }
        size_t index = static_cast<size_t>(it - allowed.begin());
        if (index < position) {
            reject(pathOf(node) + " is out of order (expected order: " + joined(allowed) + ")");
        }
        if (index == position && seenAtPosition && !contains(repeatable, node.name())) {
            reject(pathOf(node) + " occurs more than once");
        }
        seenAtPosition = true;
        position = index;
    }
}

void XmlCheck::oneOf(pugi::xml_node parent, const char* name, const std::string& value,
                     std::initializer_list<const char*> allowed) {
    if (!contains(allowed, value.c_str())) {
        reject(pathOf(parent, name) + " has the unexpected value \"" + CardDataMask::value(name, value) + "\"");
    }
}

void XmlCheck::absent(pugi::xml_node parent, const char* name) {
    if (parent.child(name)) {
        reject(pathOf(parent, name) + " must not be present");
    }
}

std::string XmlCheck::pathOf(pugi::xml_node node) {
    std::string path;
    for (pugi::xml_node n = node; n && n.type() == pugi::node_element; n = n.parent()) {
        if (std::strcmp(n.name(), "Document") == 0 && !n.parent().parent()) {
            break;
        }
        path = path.empty() ? std::string(n.name()) : std::string(n.name()) + "/" + path;
    }
    return path;
}

std::string XmlCheck::pathOf(pugi::xml_node parent, const char* name) {
    std::string base = pathOf(parent);
    return base.empty() ? name : base + "/" + name;
}

} // namespace acqsim
