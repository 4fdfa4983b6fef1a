#pragma once

#include "Host/TBXML.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <type_traits>

/// Objects handed out of blocks that double in size up to a ceiling: a
/// document costs a few allocations however many elements it has, nothing
/// moves once made, and freeing is flat whatever the nesting. Only the
/// objects handed out are initialised.
template <class T>
class TBXMLBlockPool {
    static_assert(std::is_trivially_destructible_v<T>);

public:
    TBXMLBlockPool() = default;
    TBXMLBlockPool(const TBXMLBlockPool&) = delete;
    TBXMLBlockPool& operator=(const TBXMLBlockPool&) = delete;
    ~TBXMLBlockPool() {
        while (blocks_) {
            void* next = *static_cast<void**>(blocks_);
            ::operator delete(blocks_);
            blocks_ = next;
        }
    }

    /// The size of the first block, for a document expected to need about that many.
    void expect(size_t count) { nextBlock_ = std::clamp(count, kSmallestBlock, kLargestBlock); }

    T& make() {
        if (next_ == limit_) grow();
        return *::new (next_++) T{};
    }

private:
    static constexpr size_t kSmallestBlock = 16;
    static constexpr size_t kLargestBlock = size_t{1} << 16;

    /// Each block starts with the address of the block made before it.
    static constexpr size_t kHeader = (sizeof(void*) + alignof(T) - 1) / alignof(T) * alignof(T);

    void grow() {
        void* block = ::operator new(kHeader + nextBlock_ * sizeof(T));
        *static_cast<void**>(block) = blocks_;
        blocks_ = block;
        next_ = reinterpret_cast<T*>(static_cast<unsigned char*>(block) + kHeader);
        limit_ = next_ + nextBlock_;
        nextBlock_ = std::min(nextBlock_ * 2, kLargestBlock);
    }

    void* blocks_ = nullptr;
    T* next_ = nullptr;
    T* limit_ = nullptr;
    size_t nextBlock_ = kSmallestBlock;
};

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
