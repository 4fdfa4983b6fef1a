#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

/// The element objects of one reply are many, small, made together by one
/// thread and mostly dropped together: while a reply is read they are cut
/// out of a few shared blocks instead of costing one heap allocation each
/// (that was most of the time spent filling the message classes). They are
/// ordinary shared_ptr objects for their users; the blocks go when the last
/// object made in them goes, whichever thread drops it. Keeping one small
/// object keeps its reply's blocks: a few kilobytes.
class KVRReadingArena {
public:
    /// While a scope is open on a thread, make() on that thread takes its
    /// objects from the scope's arena; scopes nest, the innermost wins.
    class Scope {
    public:
        Scope();
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        KVRReadingArena* arena_;
        KVRReadingArena* outer_;
    };

    /// A new T from the open scope's arena, or from the heap when none is open.
    template <class T>
    static std::shared_ptr<T> make() {
        if (KVRReadingArena* arena = current_) return std::allocate_shared<T>(Allocator<T>(arena));
        return std::make_shared<T>();
    }

private:
    template <class T>
    struct Allocator {
        using value_type = T;
        KVRReadingArena* arena;
        explicit Allocator(KVRReadingArena* a) : arena(a) {}
        template <class U>
        Allocator(const Allocator<U>& other) : arena(other.arena) {}
        T* allocate(size_t n) { return static_cast<T*>(arena->allocate(n * sizeof(T), alignof(T))); }
        void deallocate(T*, size_t) { arena->release(); }
        template <class U>
        bool operator==(const Allocator<U>& other) const { return arena == other.arena; }
    };

    struct Block;

    static KVRReadingArena* create();
    KVRReadingArena() = default;
    ~KVRReadingArena() = default;

    void* allocate(size_t size, size_t alignment);
    void release();
    void close();
    void destroy();

    static thread_local KVRReadingArena* current_;

    /// Objects alive, plus kOpen while the scope is open: during the read only
    /// the reading thread makes objects, so it counts them in `made_` without
    /// a locked instruction and settles the two counts when the scope closes.
    static constexpr size_t kOpen = ~size_t{0} / 2;
    std::atomic<size_t> live_{kOpen};
    size_t made_ = 0;
    char* next_ = nullptr;
    char* limit_ = nullptr;
    /// Blocks after the first, the newest first; the first holds this object.
    Block* blocks_ = nullptr;
    size_t nextBlock_ = 0;
};
