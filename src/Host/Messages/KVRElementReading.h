#pragma once

#include "Host/Messages/KVRReadingArena.h"
#include "Host/TBXML.h"
#include "Host/TBXMLBuilder.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// The steps every response element repeats while walking its children:
/// exact, case-sensitive name tests, texts taken as they stand, and nested
/// elements made only when their tag is present.
namespace KVRElementReading {

/// A tag written in the code, cut while compiling into the eight-byte words
/// a name is compared with, its terminating zero included: the words are
/// then constants in the instructions rather than bytes rebuilt at each test.
struct Tag {
    static constexpr size_t kMaxWords = 4;
    uint64_t words[kMaxWords] = {};
    /// Which bytes of the last word belong to the tag.
    uint64_t lastMask = 0;
    size_t count = 0;
    const char* text = nullptr;

    template <size_t N>
    consteval Tag(const char (&tag)[N]) : count((N + 7) / 8), text(tag) {
        static_assert(N <= kMaxWords * sizeof(uint64_t), "a longer tag needs more words");
        for (size_t i = 0; i < N; ++i) words[i / 8] |= uint64_t{static_cast<unsigned char>(tag[i])} << (8 * (i % 8));
        lastMask = N % 8 == 0 ? ~uint64_t{0} : (uint64_t{1} << (8 * (N % 8))) - 1;
    }
};

/// Exact, case-sensitive. A word of the name is read only when the bytes
/// before it matched, so it starts at or before the name's terminating zero,
/// and the tree's bytes are followed by TBXMLBuilder::kPadding zero bytes:
/// the reads stay inside the document.
inline bool named(const TBXMLElement* element, const Tag& tag) {
    const char* name = element->name;
    if (name == nullptr) return false;
    if constexpr (std::endian::native != std::endian::little) {
        return std::strcmp(name, tag.text) == 0;
    } else {
        static_assert(TBXMLBuilder::kPadding >= sizeof(uint64_t));
        for (size_t w = 0; w < tag.count; ++w) {
            uint64_t have;
            std::memcpy(&have, name + w * sizeof have, sizeof have);
            if (w + 1 == tag.count) have &= tag.lastMask;
            if (have != tag.words[w]) return false;
        }
        return true;
    }
}

/// The element's text with the length the tree kept: copying it costs no
/// second pass over its bytes.
inline std::string_view text(const TBXMLElement* element) {
    return element->text ? std::string_view(element->text, element->textLength) : std::string_view();
}

/// A new element object filled from the children of `element`.
template <class Element>
std::shared_ptr<Element> nested(const TBXMLElement* element) {
    auto object = KVRReadingArena::make<Element>();
    object->read(element->firstChild);
    return object;
}

/// The same for an element held by value: made afresh, so that a repeated
/// tag replaces what the earlier one gave, as a new object would.
template <class Element>
void readNested(std::optional<Element>& field, const TBXMLElement* element) {
    field.emplace().read(element->firstChild);
}

/// Which element named `tag` on the way down is read.
enum class Descent { lastNamed, firstNamed };

/// Walks down from the root through first children to the element named
/// `tag`. Null when there is none, including for a text that is not XML.
inline const TBXMLElement* findOnTheWayDown(const TBXML& document, const Tag& tag, Descent descent) {
    const TBXMLElement* found = nullptr;
    for (const TBXMLElement* e = document.rootXMLElement(); e; e = e->firstChild) {
        if (!named(e, tag)) continue;
        found = e;
        if (descent == Descent::firstNamed) break;
    }
    return found;
}

/// Reads the element named `tag` met on the way down from the root. Null
/// when there is none; a reply cut short gives what it holds.
template <class Element>
std::shared_ptr<Element> descendTo(const std::string& body, const Tag& tag, Descent descent = Descent::lastNamed) {
    KVRReadingArena::Scope objects;
    TBXML document(body);
    const TBXMLElement* found = findOnTheWayDown(document, tag, descent);
    return found ? nested<Element>(found) : nullptr;
}

/// The same into a message held by value, emptied first.
template <class Element>
void descendTo(std::optional<Element>& data, const std::string& body, const Tag& tag,
               Descent descent = Descent::lastNamed) {
    data.reset();
    TBXML document(body);
    if (const TBXMLElement* found = findOnTheWayDown(document, tag, descent)) readNested(data, found);
}

}  // namespace KVRElementReading
