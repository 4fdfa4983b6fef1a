#include "Host/TBXMLBuilder.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace {

enum ByteClass : unsigned char {
    kNameStart = 1,      // may begin an element name: a letter, '_', ':' or any byte of a multi-byte character
    kNameStop = 2,       // ends an element name
    kAttributeStop = 4,  // ends an attribute name
    kValueStop = 8,      // ends an unquoted attribute value
    kSpace = 16,         // separates the parts of a tag
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
    return classes;
}();

bool is(char c, unsigned char byteClass) { return (kByteClasses[static_cast<unsigned char>(c)] & byteClass) != 0; }

/// The first byte at or after `p` of the class; the final zero is in every stop class.
char* skipTo(char* p, unsigned char stop) {
    while (!is(*p, stop)) ++p;
    return p;
}

// Scans eight bytes at a time: the buffer has kPadding readable zero bytes
// from its end on, so a word read at any byte before the end stays inside it.

using Word = uint64_t;
constexpr Word kOnes = 0x0101010101010101u;
constexpr Word kHighBits = 0x8080808080808080u;

/// The eight bytes at `p`, the first in the lowest bits.
Word wordAt(const char* p) {
    Word word;
    std::memcpy(&word, p, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

/// The high bit of each byte equal to `byte`; exact up to the first such
/// byte, which is all that is looked at.
Word bytesEqual(Word word, unsigned char byte) {
    Word x = word ^ (kOnes * byte);
    return (x - kOnes) & ~x & kHighBits;
}

/// The first byte marked in `mask` at or after `p`, where the mask's word was read.
char* firstMarked(char* p, Word mask) { return p + std::countr_zero(mask) / 8; }

/// Texts of a reply are mostly a few bytes of indentation or a short value:
/// words for those, the library's search for long ones.
constexpr ptrdiff_t kWordScan = 32;

/// The next '<' at or after `from`, or null.
char* nextLt(char* from, char* end) {
    char* wordsEnd = end - from > kWordScan ? from + kWordScan : end;
    for (char* p = from; p < wordsEnd; p += sizeof(Word)) {
        if (Word mask = bytesEqual(wordAt(p), '<')) {
            char* lt = firstMarked(p, mask);
            return lt < end ? lt : nullptr;
        }
    }
    if (wordsEnd == end) return nullptr;
    return static_cast<char*>(std::memchr(wordsEnd, '<', static_cast<size_t>(end - wordsEnd)));
}

/// The first '>', '<' or NUL at or after `p`; the final zero stops it.
char* endTagStop(char* p) {
    for (;; p += sizeof(Word)) {
        Word word = wordAt(p);
        if (Word mask = bytesEqual(word, '>') | bytesEqual(word, '<') | bytesEqual(word, '\0'))
            return firstMarked(p, mask);
    }
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
        at = endTagStop(at);
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
    current_->textLength = static_cast<size_t>(textEnd_ - current_->text);
    textEnd_ = nullptr;
}
