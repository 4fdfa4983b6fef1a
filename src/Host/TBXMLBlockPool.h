#pragma once

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
