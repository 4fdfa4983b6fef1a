#pragma once

#include "Host/TBXML.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

/// The steps every response element repeats while walking its children:
/// exact, case-sensitive name tests, texts taken as they stand, and nested
/// elements made only when their tag is present.
namespace KVRElementReading {

/// For a tag written in the code: compared byte by byte, inline, up to the
/// first difference, which is nearly always the first byte; never past the
/// end of the element's name.
template <size_t N>
inline bool named(const TBXMLElement* element, const char (&tag)[N]) {
    const char* name = element->name;
    if (name == nullptr) return false;
    for (size_t i = 0; i < N; ++i)
        if (name[i] != tag[i]) return false;
    return true;
}

inline bool named(const TBXMLElement* element, std::string_view tag) {
    return element->name != nullptr && tag == element->name;
}

inline std::string text(const TBXMLElement* element) { return element->text ? element->text : ""; }

/// A new element object filled from the children of `element`.
template <class Element>
std::shared_ptr<Element> nested(const TBXMLElement* element) {
    auto object = std::make_shared<Element>();
    object->read(element->firstChild);
    return object;
}

/// Which element named `tag` on the way down is read.
enum class Descent { lastNamed, firstNamed };

/// Walks down from the root through first children and reads the element
/// named `tag` met on the way. Null when there is none, including for a text
/// that is not XML; a reply cut short gives what it holds.
template <class Element>
std::shared_ptr<Element> descendTo(const std::string& body, const char* tag, Descent descent = Descent::lastNamed) {
    TBXML document(body);
    const TBXMLElement* found = nullptr;
    for (const TBXMLElement* e = document.rootXMLElement(); e; e = e->firstChild) {
        if (!named(e, tag)) continue;
        found = e;
        if (descent == Descent::firstNamed) break;
    }
    return found ? nested<Element>(found) : nullptr;
}

}  // namespace KVRElementReading
