#include "Host/TBXML.h"

#include "Host/KVRDataCoding.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <forward_list>
#include <fstream>
#include <iterator>
#include <new>
#include <vector>

// The tree is built by pugixml, a non-recursive DOM parser, parsing in place
// over the document's own copy of the bytes; this class turns its nodes into
// the element structure the message classes walk. Only the parser options
// that keep the bytes raw are used: no entity decoding, no end-of-line or
// attribute white-space normalisation; comments, processing instructions,
// declaration and doctype are skipped; CDATA is kept and merged into texts.

namespace {

/// Objects handed out of blocks that double in size: a document costs a few
/// allocations however many elements it has, and nothing moves once made.
template <class T>
class BlockPool {
public:
    T& make() {
        if (used_ == capacity_) grow();
        return blocks_.back()[used_++];
    }
    void clear() {
        blocks_.clear();
        used_ = capacity_ = 0;
    }

private:
    static constexpr size_t kFirstBlock = 16;
    static constexpr size_t kLargestBlock = 1024;

    void grow() {
        capacity_ = capacity_ == 0 ? kFirstBlock : std::min(capacity_ * 2, kLargestBlock);
        blocks_.push_back(std::make_unique<T[]>(capacity_));
        used_ = 0;
    }

    std::vector<std::unique_ptr<T[]>> blocks_;
    size_t used_ = 0;
    size_t capacity_ = 0;
};

}  // namespace

struct TBXML::Document {
    std::unique_ptr<char[]> bytes;
    pugi::xml_document xml;
    BlockPool<TBXMLElement> elements;
    BlockPool<TBXMLAttribute> attributes;
    std::forward_list<std::string> mergedTexts;
    TBXMLElement* root = nullptr;
};

namespace {

constexpr unsigned kParseOptions = pugi::parse_cdata | pugi::parse_ws_pcdata;

void report(std::optional<KVRError>* error, long code) {
    if (error) *error = TBXML::errorWithCode(code);
}

// pugixml's accessors are calls into the shared library, so each node is
// looked at as few times as possible: a null node is recognised by its type.

pugi::xml_node nextElementSibling(const pugi::xml_node& node) {
    pugi::xml_node sibling = node.next_sibling();
    for (pugi::xml_node_type type; (type = sibling.type()) != pugi::node_null; sibling = sibling.next_sibling()) {
        if (type == pugi::node_element) break;
    }
    return sibling;
}

/// What an element holds before its first child element.
struct Lead {
    /// Its character data (CDATA included, comments left out); a single
    /// piece is used in place, several are joined.
    const char* text = "";
    /// The first child element, or a null node.
    pugi::xml_node firstElement;
};

Lead leadOf(const pugi::xml_node& node, std::forward_list<std::string>& mergedTexts) {
    Lead lead;
    const char* single = nullptr;
    std::string merged;
    int pieces = 0;
    pugi::xml_node child = node.first_child();
    for (pugi::xml_node_type type; (type = child.type()) != pugi::node_null; child = child.next_sibling()) {
        if (type == pugi::node_element) break;
        if (type != pugi::node_pcdata && type != pugi::node_cdata) continue;
        const char* value = child.value();
        if (*value == '\0') continue;
        if (pieces == 0) {
            single = value;
        } else {
            if (pieces == 1) merged = single;
            merged += value;
        }
        ++pieces;
    }
    lead.firstElement = child;
    if (pieces == 1) {
        lead.text = single;
    } else if (pieces > 1) {
        mergedTexts.push_front(std::move(merged));
        lead.text = mergedTexts.front().c_str();
    }
    return lead;
}

TBXMLAttribute* attributesOf(const pugi::xml_node& node, BlockPool<TBXMLAttribute>& pool) {
    TBXMLAttribute* first = nullptr;
    TBXMLAttribute* last = nullptr;
    for (pugi::xml_attribute attribute = node.first_attribute(); attribute; attribute = attribute.next_attribute()) {
        TBXMLAttribute& made = pool.make();
        made.name = attribute.name();
        made.value = attribute.value();
        (last ? last->next : first) = &made;
        last = &made;
    }
    return first;
}

}  // namespace

TBXML::TBXML() : document_(std::make_unique<Document>()) {}

TBXML::TBXML(std::string_view xml, std::optional<KVRError>* error) : TBXML() {
    parse(xml.data(), xml.size(), error);
}

TBXML::TBXML(const char* bytes, size_t length, std::optional<KVRError>* error) : TBXML() {
    if (bytes == nullptr) {
        report(error, TBXMLErrorDataNil);
        return;
    }
    parse(bytes, length, error);
}

TBXML::~TBXML() = default;
TBXML::TBXML(TBXML&&) noexcept = default;
TBXML& TBXML::operator=(TBXML&&) noexcept = default;

TBXML TBXML::fromFile(const std::string& path, std::optional<KVRError>* error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        TBXML empty;
        report(error, TBXMLErrorFileNotFoundInBundle);
        return empty;
    }
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (KVRDataCoding::isGzip(bytes)) {
        auto inflated = KVRDataCoding::gzipInflate(bytes);
        if (!inflated) {
            TBXML empty;
            report(error, TBXMLErrorDecodeFailed);
            return empty;
        }
        bytes = std::move(*inflated);
    }
    return TBXML(bytes, error);
}

void TBXML::parse(const char* bytes, size_t length, std::optional<KVRError>* error) {
    Document& d = *document_;
    try {
        d.bytes.reset(new char[length + 1]);
        if (length > 0) std::memcpy(d.bytes.get(), bytes, length);
        d.bytes[length] = '\0';
        pugi::xml_parse_result result =
            d.xml.load_buffer_inplace(d.bytes.get(), length, kParseOptions, pugi::encoding_utf8);
        if (result.status == pugi::status_out_of_memory) {
            report(error, TBXMLErrorMemoryAllocFailure);
            return;
        }

        // Pre-order walk without recursion: descend to first children, then
        // move to the next sibling of the nearest ancestor that has one.
        TBXMLElement* parent = nullptr;
        TBXMLElement* lastTopLevel = nullptr;
        pugi::xml_node node = leadOf(d.xml, d.mergedTexts).firstElement;
        while (node.type() != pugi::node_null) {
            TBXMLElement& element = d.elements.make();
            Lead lead = leadOf(node, d.mergedTexts);
            element.name = node.name();
            element.text = lead.text;
            element.firstAttribute = attributesOf(node, d.attributes);
            element.parentElement = parent;
            TBXMLElement* previous = parent ? parent->currentChild : lastTopLevel;
            element.previousSibling = previous;
            if (previous) previous->nextSibling = &element;
            if (parent) {
                if (!parent->firstChild) parent->firstChild = &element;
                parent->currentChild = &element;
            } else {
                if (!d.root) d.root = &element;
                lastTopLevel = &element;
            }

            if (lead.firstElement.type() != pugi::node_null) {
                parent = &element;
                node = lead.firstElement;
                continue;
            }
            for (;;) {
                pugi::xml_node sibling = nextElementSibling(node);
                if (sibling.type() != pugi::node_null) {
                    node = sibling;
                    break;
                }
                if (!parent) {
                    node = pugi::xml_node();
                    break;
                }
                node = node.parent();
                parent = parent->parentElement;
            }
        }
        if (!result) report(error, TBXMLErrorDecodeFailed);
    } catch (const std::bad_alloc&) {
        d.root = nullptr;
        d.elements.clear();
        report(error, TBXMLErrorMemoryAllocFailure);
    }
}

const TBXMLElement* TBXML::rootXMLElement() const { return document_ ? document_->root : nullptr; }

std::string TBXML::elementName(const TBXMLElement* element, std::optional<KVRError>* error) {
    if (!element) {
        report(error, TBXMLErrorElementIsNil);
        return {};
    }
    if (!element->name) {
        report(error, TBXMLErrorElementNameIsNil);
        return {};
    }
    return element->name;
}

std::string TBXML::textForElement(const TBXMLElement* element, std::optional<KVRError>* error) {
    if (!element) {
        report(error, TBXMLErrorElementIsNil);
        return {};
    }
    if (!element->text) {
        report(error, TBXMLErrorElementTextIsNil);
        return {};
    }
    return element->text;
}

std::optional<std::string> TBXML::valueOfAttributeNamed(const std::string& name, const TBXMLElement* element,
                                                        std::optional<KVRError>* error) {
    if (!element) {
        report(error, TBXMLErrorElementIsNil);
        return std::nullopt;
    }
    if (name.empty()) {
        report(error, TBXMLErrorParamNameIsNil);
        return std::nullopt;
    }
    for (const TBXMLAttribute* a = element->firstAttribute; a; a = a->next) {
        if (a->name && name == a->name) return std::string(a->value ? a->value : "");
    }
    report(error, TBXMLErrorAttributeNotFound);
    return std::nullopt;
}

namespace {

const TBXMLElement* firstNamed(const std::string& name, const TBXMLElement* from, std::optional<KVRError>* error) {
    for (const TBXMLElement* e = from; e; e = e->nextSibling) {
        if (e->name && name == e->name) return e;
    }
    report(error, TBXMLErrorElementNotFound);
    return nullptr;
}

}  // namespace

const TBXMLElement* TBXML::childElementNamed(const std::string& name, const TBXMLElement* parent,
                                             std::optional<KVRError>* error) {
    if (!parent) {
        report(error, TBXMLErrorElementIsNil);
        return nullptr;
    }
    if (name.empty()) {
        report(error, TBXMLErrorParamNameIsNil);
        return nullptr;
    }
    return firstNamed(name, parent->firstChild, error);
}

const TBXMLElement* TBXML::nextSiblingNamed(const std::string& name, const TBXMLElement* element,
                                            std::optional<KVRError>* error) {
    if (!element) {
        report(error, TBXMLErrorElementIsNil);
        return nullptr;
    }
    if (name.empty()) {
        report(error, TBXMLErrorParamNameIsNil);
        return nullptr;
    }
    return firstNamed(name, element->nextSibling, error);
}

std::string TBXML::errorText(long code) {
    static const char* const texts[] = {
        "Data is nil",        "Decode failure",      "Unable to allocate memory", "File not found in bundle",
        "Element is nil",     "Element name is nil", "Element not found",         "Element text is nil",
        "Attribute is nil",   "Attribute name is nil", "Attribute not found",     "Parameter name is nil",
    };
    if (code < 0 || code >= static_cast<long>(std::size(texts))) return "No Error Description!";
    return texts[code];
}

KVRError TBXML::errorWithCode(long code) {
    return KVRError(TBXMLErrorDomain, code, {{NSLocalizedDescriptionKey, errorText(code)}});
}
