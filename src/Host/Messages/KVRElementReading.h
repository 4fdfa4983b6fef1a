#pragma once

#include "Host/Messages/KVRReadingArena.h"
#include "Host/TBXML.h"
#include "Host/TBXMLBuilder.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

/// The steps every response element repeats while walking its children:
/// exact, case-sensitive name tests, texts taken as they stand, and nested
/// elements made only when their tag is present.
namespace KVRElementReading {

/// For a tag written in the code: compared eight bytes at a time against
/// words the compiler makes from the tag, zero included. A word is read only
/// when the bytes before it matched, so it starts at or before the name's
/// terminating zero, and the tree's bytes are followed by
/// TBXMLBuilder::kPadding zero bytes: the reads stay inside the document.
template <size_t N>
inline bool named(const TBXMLElement* element, const char (&tag)[N]) {
    const char* name = element->name;
    if (name == nullptr) return false;
    if constexpr (std::endian::native != std::endian::little) {
        for (size_t i = 0; i < N; ++i)
            if (name[i] != tag[i]) return false;
    } else {
        static_assert(TBXMLBuilder::kPadding >= sizeof(uint64_t));
        for (size_t i = 0; i < N; i += sizeof(uint64_t)) {
            const size_t bytes = N - i < sizeof(uint64_t) ? N - i : sizeof(uint64_t);
            uint64_t want = 0;
            std::memcpy(&want, tag + i, bytes);
            const uint64_t mask = bytes == sizeof(uint64_t) ? ~uint64_t{0} : (uint64_t{1} << (8 * bytes)) - 1;
            uint64_t have;
            std::memcpy(&have, name + i, sizeof have);
            if ((have & mask) != want) return false;
        }
    }
    return true;
}

inline bool named(const TBXMLElement* element, std::string_view tag) {
    return element->name != nullptr && tag == element->name;
}

inline std::string text(const TBXMLElement* element) { return element->text ? element->text : ""; }

/// A new element object filled from the children of `element`.
template <class Element>
std::shared_ptr<Element> nested(const TBXMLElement* element) {
    auto object = KVRReadingArena::make<Element>();
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
    KVRReadingArena::Scope objects;
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
