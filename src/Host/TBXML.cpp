#include "Host/TBXML.h"

#include "Host/KVRDataCoding.h"
#include "Host/TBXMLBuilder.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <new>

struct TBXML::Document {
    /// The document's own copy of the bytes, followed by zeros.
    std::unique_ptr<char[]> bytes;
    TBXMLBlockPool<TBXMLElement> elements;
    TBXMLBlockPool<TBXMLAttribute> attributes;
    TBXMLElement* root = nullptr;
};

namespace {

// Host replies carry an element every 20 to 40 bytes: the first block of
// elements then holds a whole reply.
constexpr size_t kBytesPerElement = 24;

void report(std::optional<KVRError>* error, long code) {
    if (error) *error = TBXML::errorWithCode(code);
}

// A NUL inside a text ends it, as it ends the zero-terminated text: the
// lengths the builder took up to the next markup are cut back to it. Hosts
// never send one, so the whole tree is walked only when the bytes hold one.
void cutTextsAtNul(TBXMLElement* root) {
    for (TBXMLElement* e = root; e;) {
        e->textLength = std::strlen(e->text);
        if (e->firstChild) {
            e = e->firstChild;
            continue;
        }
        while (e && !e->nextSibling) e = e->parentElement;
        if (e) e = e->nextSibling;
    }
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
        d.bytes.reset(new char[length + TBXMLBuilder::kPadding]);
        if (length > 0) std::memcpy(d.bytes.get(), bytes, length);
        std::memset(d.bytes.get() + length, 0, TBXMLBuilder::kPadding);
        d.elements.expect(length / kBytesPerElement);
        d.root = TBXMLBuilder(d.bytes.get(), d.bytes.get() + length, d.elements, d.attributes).build();
        if (length > 0 && std::memchr(bytes, '\0', length)) cutTextsAtNul(d.root);
    } catch (const std::bad_alloc&) {
        d.root = nullptr;
        report(error, TBXMLErrorMemoryAllocFailure);
        return;
    }
    if (!d.root) report(error, TBXMLErrorDecodeFailed);
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
    return std::string(element->text, element->textLength);
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
