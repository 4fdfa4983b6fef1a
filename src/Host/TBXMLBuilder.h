#pragma once

#include "Host/TBXML.h"
#include "Host/TBXMLBlockPool.h"

#include <cstddef>

/// Builds TBXML's tree in one pass over a buffer that it cuts in place:
/// names, texts and attribute values become zero-terminated where they
/// stand, and the elements point into the buffer. Nothing is validated and
/// nothing is decoded; whatever is not markup is text. A loop, not
/// recursion, so the nesting depth costs no stack.
class TBXMLBuilder {
public:
    /// Zero bytes the buffer must hold from `end` on: the scans read whole words.
    static constexpr size_t kPadding = 8;

    /// `end` must point at the first of kPadding zero bytes that belong to the buffer.
    TBXMLBuilder(char* begin, char* end, TBXMLBlockPool<TBXMLElement>& elements,
                 TBXMLBlockPool<TBXMLAttribute>& attributes);

    /// The first top-level element, or null when the bytes hold none.
    TBXMLElement* build();

private:
    char* markup(char* lt);
    char* startTag(char* name);
    char* attribute(TBXMLElement& element, TBXMLAttribute*& last, char* name);
    char* endTag(char* at);
    char* bang(char* at);
    /// The marker's first byte, or the end.
    char* find(char* at, const char* marker, size_t length) const;
    char* skipPast(char* at, const char* marker, size_t length) const;
    char* skipDeclaration(char* at);

    TBXMLElement& addElement(char* name);
    char* open(TBXMLElement& element, char* text);
    void appendText(char* from, char* to);
    void closeText();

    char* const begin_;
    char* const end_;
    TBXMLBlockPool<TBXMLElement>& elements_;
    TBXMLBlockPool<TBXMLAttribute>& attributes_;
    TBXMLElement* root_ = nullptr;
    TBXMLElement* lastTopLevel_ = nullptr;
    /// The innermost element whose end tag has not been read.
    TBXMLElement* current_ = nullptr;
    /// Where the current element's text ends so far; null once a child or an
    /// end tag has closed it. Pieces split by comments or CDATA markers are
    /// moved down to join it.
    char* textEnd_ = nullptr;
};
