#include "Host/TBXMLBuilder.h"

#include <array>
#include <cstring>
#include <string_view>

namespace {

enum ByteClass : unsigned char {
    kNameStart = 1,      // may begin an element name: a letter, '_', ':' or any byte of a multi-byte character
    kNameStop = 2,       // ends an element name
    kAttributeStop = 4,  // ends an attribute name
    kValueStop = 8,      // ends an unquoted attribute value
    kSpace = 16,         // separates the parts of a tag
    kEndTagStop = 32,    // ends an end tag: '>', or a '<' that starts the next markup
};

// NUL is in every stop class: the zero after the last byte stops every scan,
// and a NUL inside a tag counts as white space.
constexpr std::array<unsigned char, 256> kByteClasses = [] {
    std::array<unsigned char, 256> classes{};
    for (int b = 'a'; b <= 'z'; ++b) classes[b] |= kNameStart;
    for (int b = 'A'; b <= 'Z'; ++b) classes[b] |= kNameStart;
    for (int b = 0x80; b < 0x100; ++b) classes[b] |= kNameStart;
    classes['_'] |= kNameStart;
    classes[':'] |= kNameStart;
    for (unsigned char b : {' ', '\t', '\n', '\r', '\0'}) classes[b] |= kNameStop | kAttributeStop | kValueStop | kSpace;
    classes['/'] |= kNameStop | kAttributeStop | kValueStop;
    classes['>'] |= kNameStop | kAttributeStop | kValueStop;
    classes['='] |= kAttributeStop;
    classes['>'] |= kEndTagStop;
    classes['<'] |= kEndTagStop;
    classes['\0'] |= kEndTagStop;
    return classes;
}();

bool is(char c, unsigned char byteClass) { return (kByteClasses[static_cast<unsigned char>(c)] & byteClass) != 0; }

/// The first byte at or after `p` of the class; the final zero is in every stop class.
char* skipTo(char* p, unsigned char stop) {
    while (!is(*p, stop)) ++p;
    return p;
}

/// The next '<' at or after `from`, or null. Most texts of a reply are a few
/// bytes of indentation or a short value: they are looked through here
/// before the library's search takes over.
char* nextLt(char* from, char* end) {
    constexpr ptrdiff_t kInline = 16;
    char* inlineEnd = end - from > kInline ? from + kInline : end;
    for (char* p = from; p < inlineEnd; ++p)
        if (*p == '<') return p;
    if (inlineEnd == end) return nullptr;
    return static_cast<char*>(std::memchr(inlineEnd, '<', static_cast<size_t>(end - inlineEnd)));
}

/// A '<' followed by anything else ("a < b", "<<", "<1") is taken as text.
bool opensMarkup(char c) { return c == '/' || c == '!' || c == '?' || is(c, kNameStart); }

constexpr const char* kEmpty = "";

}  // namespace

TBXMLBuilder::TBXMLBuilder(char* begin, char* end, TBXMLBlockPool<TBXMLElement>& elements,
                           TBXMLBlockPool<TBXMLAttribute>& attributes)
    : begin_(begin), end_(end), elements_(elements), attributes_(attributes) {}

TBXMLElement* TBXMLBuilder::build() {
    char* text = begin_;  // the first byte not yet taken
    char* from = begin_;  // where the next '<' is looked for
    while (from < end_) {
        char* lt = nextLt(from, end_);
        if (!lt) break;
        if (opensMarkup(lt[1])) {
            appendText(text, lt);
            text = from = markup(lt);
        } else {
            from = lt + 1;
        }
    }
    appendText(text, end_);
    closeText();
    return root_;
}

// A zero may be written over the '<' once the byte after it has been read:
// that is where the text before it ends.
char* TBXMLBuilder::markup(char* lt) {
    char* at = lt + 1;
    switch (*at) {
        case '/': return endTag(at + 1);
        case '!': return bang(at + 1);
        case '?': return skipPast(at + 1, "?>", 2);
        default: return startTag(at);
    }
}

// Each byte that ends a name or an unquoted value is looked at before the
// zero that cuts the name is written over it.
char* TBXMLBuilder::startTag(char* name) {
    TBXMLElement& element = addElement(name);
    TBXMLAttribute* last = nullptr;
    char* at = skipTo(name, kNameStop);
    for (;;) {
        if (at == end_) return open(element, end_);
        char c = *at;
        if (c == '>') {
            *at = '\0';
            return open(element, at + 1);
        }
        if (c == '/' && at[1] == '>') {
            *at = '\0';
            element.text = kEmpty;
            return at + 2;
        }
        if (c == '/' || is(c, kSpace)) {
            *at++ = '\0';
            continue;
        }
        at = attribute(element, last, at);
    }
}

// name="v", name='v', name=v (up to white space, '>' or "/>"), or a name
// alone with an empty value. Returns the first byte not taken, which the tag's
// loop cuts.
char* TBXMLBuilder::attribute(TBXMLElement& element, TBXMLAttribute*& last, char* name) {
    TBXMLAttribute& attribute = attributes_.make();
    (last ? last->next : element.firstAttribute) = &attribute;
    last = &attribute;
    attribute.name = name;

    char* nameEnd = skipTo(name, kAttributeStop);
    char* at = nameEnd;
    while (at < end_ && is(*at, kSpace)) ++at;
    if (*at != '=') {
        attribute.value = kEmpty;
        return nameEnd;
    }
    *nameEnd = '\0';
    for (++at; at < end_ && is(*at, kSpace);) ++at;
    char quote = *at;
    if (quote == '"' || quote == '\'') {
        attribute.value = ++at;
        auto* close = static_cast<char*>(std::memchr(at, quote, static_cast<size_t>(end_ - at)));
        if (!close) return end_;
        *close = '\0';
        return close + 1;
    }
    attribute.value = at;
    for (;;) {
        at = skipTo(at, kValueStop);
        if (*at != '/' || at[1] == '>') return at;
        ++at;
    }
}

char* TBXMLBuilder::endTag(char* at) {
    closeText();
    if (current_) current_ = current_->parentElement;
    for (;; ++at) {
        at = skipTo(at, kEndTagStop);
        if (*at != '\0' || at == end_) break;
    }
    return *at == '>' ? at + 1 : at;
}

// Comments and CDATA leave the element's text open: the text around them is
// joined, and a CDATA section's content joins it too.
char* TBXMLBuilder::bang(char* at) {
    if (at[0] == '-' && at[1] == '-') return skipPast(at + 2, "-->", 3);
    if (std::strncmp(at, "[CDATA[", 7) == 0) {
        char* content = at + 7;
        char* close = find(content, "]]>", 3);
        appendText(content, close);
        return close == end_ ? end_ : close + 3;
    }
    return skipDeclaration(at);
}

char* TBXMLBuilder::find(char* at, const char* marker, size_t length) const {
    std::string_view rest(at, static_cast<size_t>(end_ - at));
    size_t found = rest.find(std::string_view(marker, length));
    return found == std::string_view::npos ? end_ : at + found;
}

char* TBXMLBuilder::skipPast(char* at, const char* marker, size_t length) const {
    char* found = find(at, marker, length);
    return found == end_ ? end_ : found + length;
}

// <!DOCTYPE ...> and the like, with an internal subset in brackets whose
// declarations are passed over, never expanded.
char* TBXMLBuilder::skipDeclaration(char* at) {
    int depth = 0;
    char quote = '\0';
    for (; at < end_; ++at) {
        char c = *at;
        if (quote) {
            if (c == quote) quote = '\0';
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '[') {
            ++depth;
        } else if (c == ']') {
            if (depth > 0) --depth;
        } else if (c == '>' && depth == 0) {
            return at + 1;
        }
    }
    return end_;
}

TBXMLElement& TBXMLBuilder::addElement(char* name) {
    closeText();
    TBXMLElement& element = elements_.make();
    element.name = name;
    element.parentElement = current_;
    TBXMLElement*& last = current_ ? current_->currentChild : lastTopLevel_;
    element.previousSibling = last;
    if (last) {
        last->nextSibling = &element;
    } else if (current_) {
        current_->firstChild = &element;
    } else {
        root_ = &element;
    }
    last = &element;
    return element;
}

char* TBXMLBuilder::open(TBXMLElement& element, char* text) {
    current_ = &element;
    element.text = text;
    textEnd_ = text;
    return text;
}

void TBXMLBuilder::appendText(char* from, char* to) {
    if (!textEnd_) return;
    if (from != textEnd_) std::memmove(textEnd_, from, static_cast<size_t>(to - from));
    textEnd_ += to - from;
}

void TBXMLBuilder::closeText() {
    if (!textEnd_) return;
    *textEnd_ = '\0';
    textEnd_ = nullptr;
}
