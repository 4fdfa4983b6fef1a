#pragma once

#include "Host/TBXML.h"

#include <cstring>
#include <memory>
#include <string>

/// The steps every response element repeats while walking its children:
/// exact, case-sensitive name tests, texts taken as they stand, and nested
/// elements made only when their tag is present.
namespace KVRElementReading {

inline bool named(const TBXMLElement* element, const char* tag) {
    return element->name != nullptr && std::strcmp(element->name, tag) == 0;
}

inline std::string text(const TBXMLElement* element) { return element->text ? element->text : ""; }

/// A new element object filled from the children of `element`.
template <class Element>
std::shared_ptr<Element> nested(const TBXMLElement* element) {
    auto object = std::make_shared<Element>();
    object->read(element->firstChild);
    return object;
}

/// Walks down from the root through first children and reads every element
/// named `tag` met on the way (the last one wins). Null when there is none,
/// including for a text that is not XML.
template <class Element>
std::shared_ptr<Element> descendTo(const std::string& body, const char* tag) {
    TBXML document(body);
    std::shared_ptr<Element> found;
    for (const TBXMLElement* e = document.rootXMLElement(); e; e = e->firstChild) {
        if (named(e, tag)) found = nested<Element>(e);
    }
    return found;
}

}  // namespace KVRElementReading
