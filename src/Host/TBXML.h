#pragma once

#include <kovra/KVRError.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Domain of the errors the XML reader reports.
inline constexpr const char* TBXMLErrorDomain = "TBXMLErrorDomain";

/// Error codes of the XML reader; their texts come from TBXML::errorText.
enum TBXMLErrorCode : long {
    TBXMLErrorDataNil = 0,
    TBXMLErrorDecodeFailed = 1,
    TBXMLErrorMemoryAllocFailure = 2,
    TBXMLErrorFileNotFoundInBundle = 3,
    TBXMLErrorElementIsNil = 4,
    TBXMLErrorElementNameIsNil = 5,
    TBXMLErrorElementNotFound = 6,
    TBXMLErrorElementTextIsNil = 7,
    TBXMLErrorAttributeIsNil = 8,
    TBXMLErrorAttributeNameIsNil = 9,
    TBXMLErrorAttributeNotFound = 10,
    TBXMLErrorParamNameIsNil = 11,
};

struct TBXMLAttribute {
    const char* name = nullptr;
    /// Without its quotes, entities not decoded.
    const char* value = nullptr;
    TBXMLAttribute* next = nullptr;
};

/// One element of the tree. All strings are zero-terminated UTF-8 bytes as
/// they stand in the document: a name keeps its namespace prefix and a text
/// keeps its white space and its entities undecoded.
struct TBXMLElement {
    const char* name = nullptr;
    /// Character data (CDATA sections merged in, comments left out) between
    /// the start tag and the first child element or the end tag; "" when none.
    const char* text = nullptr;
    /// The bytes of `text` before its terminating zero, so that readers
    /// need not count them again.
    size_t textLength = 0;
    TBXMLAttribute* firstAttribute = nullptr;
    TBXMLElement* parentElement = nullptr;
    TBXMLElement* firstChild = nullptr;
    /// The last child element.
    TBXMLElement* currentChild = nullptr;
    TBXMLElement* nextSibling = nullptr;
    TBXMLElement* previousSibling = nullptr;
};

/// A read-only element tree of an XML text, built in one pass over the
/// document's own copy of the bytes. Tolerant: no namespaces, no entity
/// decoding, no validation; any end tag closes the current element and
/// reading goes on, so a reply cut short or slightly malformed still gives
/// the elements it holds. Only a text with no element at all gives no root,
/// with "Decode failure". Memory grows with the input, never with its
/// nesting. Element pointers live as long as the document object.
class TBXML {
public:
    /// initWithXMLString / initWithXMLData: the bytes are taken as UTF-8.
    explicit TBXML(std::string_view xml, std::optional<KVRError>* error = nullptr);
    /// Any bytes, NULs included: the entry for fuzzing. Null bytes give an
    /// empty document and "Data is nil".
    TBXML(const char* bytes, size_t length, std::optional<KVRError>* error = nullptr);
    /// A document read from a file, inflated first when it is gzip-compressed.
    /// A missing or unreadable file gives "File not found in bundle".
    static TBXML fromFile(const std::string& path, std::optional<KVRError>* error = nullptr);

    ~TBXML();
    TBXML(TBXML&&) noexcept;
    TBXML& operator=(TBXML&&) noexcept;
    TBXML(const TBXML&) = delete;
    TBXML& operator=(const TBXML&) = delete;

    /// The first top-level element, or null.
    const TBXMLElement* rootXMLElement() const;

    // Lookups over any element. Each reports through the optional error when
    // its argument is null or nothing matches.
    static std::string elementName(const TBXMLElement* element, std::optional<KVRError>* error = nullptr);
    static std::string textForElement(const TBXMLElement* element, std::optional<KVRError>* error = nullptr);
    static std::optional<std::string> valueOfAttributeNamed(const std::string& name, const TBXMLElement* element,
                                                            std::optional<KVRError>* error = nullptr);
    /// First child whose name is exactly `name`.
    static const TBXMLElement* childElementNamed(const std::string& name, const TBXMLElement* parent,
                                                 std::optional<KVRError>* error = nullptr);
    /// The next following sibling whose name is exactly `name`.
    static const TBXMLElement* nextSiblingNamed(const std::string& name, const TBXMLElement* element,
                                                std::optional<KVRError>* error = nullptr);

    static std::string errorText(long code);
    static KVRError errorWithCode(long code);

private:
    struct Document;
    TBXML();
    void parse(const char* bytes, size_t length, std::optional<KVRError>* error);

    std::unique_ptr<Document> document_;
};
