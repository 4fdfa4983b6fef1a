#include "Host/XMLWriter.h"

#include "Utils/KVRStringUtil.h"

#include <kovra/KVRException.h>

#include <new>

namespace {

constexpr const char* kXmlNamespace = "http://www.w3.org/XML/1998/namespace";
constexpr const char* kXmlnsNamespace = "http://www.w3.org/2000/xmlns/";

// The characters are judged as UTF-16 code units would be: whatever lies
// outside the basic plane needs a surrogate pair, and surrogates are dropped.
bool isKept(uint32_t codePoint) {
    if (codePoint < 0x20) return codePoint == '\t' || codePoint == '\n' || codePoint == '\r';
    if (codePoint < 0xD800) return true;
    return codePoint >= 0xE000 && codePoint <= 0xFFFD;
}

const char* entityFor(char c) {
    switch (c) {
        case '"': return "&quot;";
        case '&': return "&amp;";
        case '<': return "&lt;";
        case '>': return "&gt;";
        default: return nullptr;
    }
}

void escapeInto(std::string& out, std::string_view text) {
    size_t runStart = 0;
    size_t i = 0;
    while (i < text.size()) {
        uint32_t codePoint = 0;
        size_t length = KVRStringUtil::utf8SequenceLength(text, i, codePoint);
        const char* entity = length == 1 ? entityFor(text[i]) : nullptr;
        if (length != 0 && entity == nullptr && isKept(codePoint)) {
            i += length;
            continue;
        }
        out.append(text, runStart, i - runStart);
        if (entity != nullptr) out.append(entity);
        i += length == 0 ? 1 : length;
        runStart = i;
    }
    out.append(text, runStart, text.size() - runStart);
}

}  // namespace

XMLWriter::XMLWriter() {
    prefixByNamespace_[kXmlNamespace] = "xml";
    prefixByNamespace_[kXmlnsNamespace] = "xmlns";
}

void XMLWriter::raise(const std::string& reason) { throw KVRException(exceptionName, reason); }

std::string XMLWriter::escape(std::string_view text) {
    std::string out;
    try {
        out.reserve(text.size());
        escapeInto(out, text);
    } catch (const std::bad_alloc&) {
        raise(KVRStringUtil::format("Could not allocate data buffer of %i unicode characters", static_cast<int>(text.size())));
    }
    return out;
}

void XMLWriter::setDefaultNamespace(const std::string& namespaceURI) { defaultNamespace_ = namespaceURI; }

void XMLWriter::writeStartDocumentWithEncodingAndVersion(const std::optional<std::string>& encoding,
                                                         const std::optional<std::string>& version) {
    if (!writer_.empty()) raise("Document has already been started");
    writer_ += "<?xml version=\"";
    writer_ += version.value_or("1.0");
    writer_ += "\"";
    if (encoding) {
        writer_ += " encoding=\"";
        writer_ += *encoding;
        writer_ += "\"";
        encoding_ = encoding;
    }
    writer_ += " ?>";
}

void XMLWriter::closePendingStartTag() {
    if (!openElement_) return;
    writer_ += ">";
    openElement_ = false;
}

void XMLWriter::writeLinebreak() { writer_ += lineBreak_; }

void XMLWriter::writeIndentation() {
    for (int32_t i = 0; i < level_; ++i) writer_ += indentation_;
}

void XMLWriter::startElement(const std::string& namespaceURI, const std::string& localName) {
    closePendingStartTag();
    writeLinebreak();
    writeIndentation();
    writer_ += "<";
    elements_.push_back(OpenElement{namespaceURI, localName, {}});
    bool declareDefault = false;
    if (!namespaceURI.empty()) {
        auto bound = prefixByNamespace_.find(namespaceURI);
        if (bound != prefixByNamespace_.end()) {
            if (!bound->second.empty()) writer_ += bound->second + ":";
        } else {
            // An unbound namespace other than the default one is left
            // undeclared; closing the element reports it.
            declareDefault = defaultNamespace_ && *defaultNamespace_ == namespaceURI;
        }
    }
    writer_ += localName;
    ++level_;
    openElement_ = true;
    emptyElement_ = true;
    if (declareDefault) {
        writer_ += " xmlns=\"" + escape(namespaceURI) + "\"";
        bindNamespace("", namespaceURI);
    }
}

void XMLWriter::writeStartElementWithNamespace(const std::string& namespaceURI, const std::string& localName) {
    startElement(namespaceURI, localName);
}

void XMLWriter::writeStartElement(const std::string& localName) { startElement("", localName); }

void XMLWriter::writeCharacters(std::string_view text) {
    closePendingStartTag();
    writer_ += escape(text);
    emptyElement_ = false;
}

std::string XMLWriter::prefixForEndTag(const std::string& namespaceURI) const {
    if (namespaceURI.empty()) return {};
    auto bound = prefixByNamespace_.find(namespaceURI);
    if (bound == prefixByNamespace_.end()) raise("Unknown namespace URI " + namespaceURI);
    return bound->second;
}

void XMLWriter::writeEndElement() {
    if (openElement_ && automaticEmptyElements_) {
        writer_ += " />";
        --level_;
        popElement();
        return;
    }
    if (level_ < 1) raise("Cannot write more end elements than start elements.");
    std::string prefix = prefixForEndTag(elements_.back().namespaceURI);
    --level_;
    if (openElement_) {
        writer_ += ">";
    } else if (emptyElement_) {
        writeLinebreak();
        writeIndentation();
    }
    writer_ += "</";
    if (!prefix.empty()) writer_ += prefix + ":";
    writer_ += elements_.back().localName + ">";
    popElement();
}

void XMLWriter::popElement() {
    // Bindings made on the element end with it; an outer binding of the same
    // namespace comes back.
    auto& declared = elements_.back().declaredNamespaces;
    for (auto it = declared.rbegin(); it != declared.rend(); ++it) {
        if (it->second) {
            prefixByNamespace_[it->first] = *it->second;
        } else {
            prefixByNamespace_.erase(it->first);
        }
    }
    elements_.pop_back();
    emptyElement_ = true;
    openElement_ = false;
}

void XMLWriter::writeAttribute(const std::string& localName, const std::string& value) {
    if (!openElement_) raise("No open start element");
    writer_ += " " + localName + "=\"" + escape(value) + "\"";
}

void XMLWriter::bindNamespace(const std::string& prefix, const std::string& namespaceURI) {
    std::optional<std::string> previous;
    if (auto bound = prefixByNamespace_.find(namespaceURI); bound != prefixByNamespace_.end()) previous = bound->second;
    elements_.back().declaredNamespaces.emplace_back(namespaceURI, previous);
    prefixByNamespace_[namespaceURI] = prefix;
}

void XMLWriter::writeNamespace(const std::string& prefix, const std::string& namespaceURI) {
    if (!openElement_) raise("No open start element");
    if (namespaceURI.empty()) raise("Cannot declare namespace without namespace " + prefix);
    writer_ += prefix.empty() ? " xmlns=\"" : " xmlns:" + prefix + "=\"";
    writer_ += escape(namespaceURI) + "\"";
    bindNamespace(prefix, namespaceURI);
}

void XMLWriter::writeElement(const std::string& localName, std::string_view text) {
    writeStartElement(localName);
    writeCharacters(text);
    writeEndElement();
}

void XMLWriter::writeElementIfSet(const std::string& localName, const std::optional<std::string_view>& text) {
    if (text) writeElement(localName, *text);
}
