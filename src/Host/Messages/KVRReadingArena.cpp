#include "Host/Messages/KVRReadingArena.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace {

// The objects of an authorisation response take under 2 KiB; a bigger reply
// takes further blocks, each twice the size of the one before.
constexpr size_t kFirstBlock = 4096;
constexpr size_t kLargestBlock = size_t{1} << 16;

char* alignUp(char* at, size_t alignment) {
    auto address = reinterpret_cast<uintptr_t>(at);
    return reinterpret_cast<char*>((address + alignment - 1) & ~(uintptr_t{alignment} - 1));
}

}  // namespace

struct KVRReadingArena::Block {
    Block* next;
};

thread_local KVRReadingArena* KVRReadingArena::current_ = nullptr;

KVRReadingArena::Scope::Scope() : arena_(create()), outer_(current_) { current_ = arena_; }

KVRReadingArena::Scope::~Scope() {
    current_ = outer_;
    arena_->close();
}

KVRReadingArena* KVRReadingArena::create() {
    char* block = static_cast<char*>(::operator new(kFirstBlock));
    auto* arena = ::new (block) KVRReadingArena();
    arena->next_ = block + sizeof(KVRReadingArena);
    arena->limit_ = block + kFirstBlock;
    arena->nextBlock_ = kFirstBlock * 2;
    return arena;
}

void* KVRReadingArena::allocate(size_t size, size_t alignment) {
    char* at = alignUp(next_, alignment);
    if (at + size > limit_) {
        size_t bytes = std::max(nextBlock_, sizeof(Block) + alignment + size);
        auto* block = static_cast<Block*>(::operator new(bytes));
        block->next = blocks_;
        blocks_ = block;
        limit_ = reinterpret_cast<char*>(block) + bytes;
        nextBlock_ = std::min(nextBlock_ * 2, kLargestBlock);
        at = alignUp(reinterpret_cast<char*>(block + 1), alignment);
    }
    next_ = at + size;
    ++made_;
    return at;
}

void KVRReadingArena::release() {
    if (live_.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy();
}

void KVRReadingArena::close() {
    // From kOpen minus the objects already dropped to the objects still alive.
    if (live_.fetch_sub(kOpen - made_, std::memory_order_acq_rel) == kOpen - made_) destroy();
}

void KVRReadingArena::destroy() {
    for (Block* block = blocks_; block;) {
        Block* next = block->next;
        ::operator delete(block);
        block = next;
    }
    this->~KVRReadingArena();
    ::operator delete(static_cast<void*>(this));
}
