#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Streaming writer of the request documents. The layout is part of what the
/// hosts receive: one tab per open element, text elements on one line, end
/// tags of elements with children on their own line, `<Tag />` for elements
/// closed with nothing inside, no line break after the last end tag.
/// Misuse throws a KVRException named "XMLWriterException". One writer per
/// document.
class XMLWriter {
public:
    static constexpr const char* exceptionName = "XMLWriterException";

    XMLWriter();

    /// The namespace declared (once, with xmlns="...") on the next element
    /// written in it.
    void setDefaultNamespace(const std::string& namespaceURI);
    /// `<?xml version="1.0" encoding="..." ?>`; must come first.
    void writeStartDocumentWithEncodingAndVersion(const std::optional<std::string>& encoding,
                                                  const std::optional<std::string>& version);
    void writeStartElementWithNamespace(const std::string& namespaceURI, const std::string& localName);
    void writeStartElement(const std::string& localName);
    /// Escaped text. Characters an XML 1.0 document cannot carry (control
    /// characters, U+FFFE/U+FFFF, anything outside the basic plane, invalid
    /// UTF-8) are dropped.
    void writeCharacters(std::string_view text);
    void writeEndElement();
    /// ` name="value"` inside the start tag still open.
    void writeAttribute(const std::string& localName, const std::string& value);
    /// Declares a prefix (` xmlns:prefix="uri"`, or ` xmlns="uri"` for an empty
    /// prefix) on the start tag still open; later elements in that namespace
    /// are written with the prefix.
    void writeNamespace(const std::string& prefix, const std::string& namespaceURI);

    /// `<name>text</name>`; an empty text gives `<name></name>`.
    void writeElement(const std::string& localName, std::string_view text);
    /// writeElement only when the text is set.
    void writeElementIfSet(const std::string& localName, const std::optional<std::string_view>& text);

    const std::string& toString() const { return writer_; }
    int32_t level() const { return level_; }

    /// The escaping applied by writeCharacters, for reuse and tests.
    static std::string escape(std::string_view text);

private:
    struct OpenElement {
        std::string namespaceURI;
        std::string localName;
        // Namespaces bound on this element, with the binding each replaced.
        std::vector<std::pair<std::string, std::optional<std::string>>> declaredNamespaces;
    };

    void closePendingStartTag();
    void writeLinebreak();
    void writeIndentation();
    void startElement(const std::string& namespaceURI, const std::string& localName);
    void popElement();
    std::string prefixForEndTag(const std::string& namespaceURI) const;
    void bindNamespace(const std::string& prefix, const std::string& namespaceURI);
    [[noreturn]] static void raise(const std::string& reason);

    std::string writer_;
    int32_t level_ = 0;
    bool openElement_ = false;
    bool emptyElement_ = false;
    std::string indentation_ = "\t";
    std::string lineBreak_ = "\n";
    bool automaticEmptyElements_ = true;
    std::optional<std::string> encoding_;
    std::vector<OpenElement> elements_;
    std::map<std::string, std::string> prefixByNamespace_;
    std::optional<std::string> defaultNamespace_;
};
