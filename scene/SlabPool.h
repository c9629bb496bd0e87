// Allocates many objects of one size.
#pragma once

#include "scene/Pooled.h"
#include "scene/SpareSlabs.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

#if defined(__has_feature)
#    define VRN_CLANG_ADDRESS_SANITIZER __has_feature(address_sanitizer)
#else
#    define VRN_CLANG_ADDRESS_SANITIZER 0
#endif

namespace vor::velmo_sdk::impl {

// Allocates from slabs of many objects, in a tenth of the time of malloc() and without padding. Objects may outlive the
// pool: a slab is freed with the pool or with its last object, the later of the two. Not thread-safe: allocation from a
// pool, and release of its objects, need external synchronisation. Under the address sanitizer each object is allocated
// separately, so that misuse is detected.
class SlabPool {
public:
    // `objectSize` is at most a tenth of a block.
    explicit SlabPool(std::size_t objectSize) noexcept : objectSize_((objectSize + 7) / 8 * 8) {}
    SlabPool(const SlabPool&) = delete;
    SlabPool& operator=(const SlabPool&) = delete;
    ~SlabPool();

    // Memory for one object, aligned to eight bytes. Throws std::bad_alloc.
    [[nodiscard]] void* allocate();

    // Releases memory that allocate() of any pool returned.
    static void release(void* place) noexcept;

private:
    // A slab consists of blocks that are aligned to their size: rounding down the address of an object yields its
    // block, which begins with a pointer to the slab.
    static constexpr std::size_t blockSize = slabBlock;

    struct Slab;
    struct Block {
        Slab* slab;
    };
    struct Free {
        Free* next;
    };
    struct Slab {
        Block block;    // the first one
        SlabPool* pool; // null after its destruction
        Slab* next;     // of the pool's slabs
        Slab* nextOpen; // of the pool's slabs with a free list
        bool isOpen;
        std::size_t live;
        Free* free;
        char* unused; // memory from here to `blockEnd` has never been allocated
        char* blockEnd;
        char* end;
    };

    static void freeIfDone(Slab* slab) noexcept {
        if (!slab->pool && slab->live == 0)
            giveSlab(slab, static_cast<std::size_t>(slab->end - reinterpret_cast<char*>(slab)));
    }
    [[nodiscard]] bool hasUnused() const noexcept {
        return slabs_ && static_cast<std::size_t>(slabs_->blockEnd - slabs_->unused) >= objectSize_;
    }
    void addBlock();
    void addSlab();

    std::size_t objectSize_;
    std::size_t slabCount_ = 0;
    Slab* slabs_ = nullptr;                 // only the first one has unused memory
    [[maybe_unused]] Slab* open_ = nullptr; // slabs with a free list
};

inline SlabPool::~SlabPool() {
    while (Slab* slab = slabs_) {
        slabs_ = slab->next;
        slab->pool = nullptr;
        freeIfDone(slab);
    }
}

#if defined(__SANITIZE_ADDRESS__) || VRN_CLANG_ADDRESS_SANITIZER

inline void* SlabPool::allocate() { return ::operator new(objectSize_); }
inline void SlabPool::release(void* place) noexcept { ::operator delete(place); }

#else

inline void* SlabPool::allocate() {
    if (Slab* slab = open_) {
        Free* place = slab->free;
        slab->free = place->next;
        ++slab->live;
        if (!slab->free) {
            open_ = slab->nextOpen;
            slab->isOpen = false;
        }
        return place;
    }
    if (!hasUnused())
        addBlock();
    ++slabs_->live;
    return std::exchange(slabs_->unused, slabs_->unused + objectSize_);
}

inline void SlabPool::release(void* place) noexcept {
    char* block = static_cast<char*>(place) - reinterpret_cast<std::uintptr_t>(place) % blockSize;
    Slab* slab = reinterpret_cast<Block*>(block)->slab;
    slab->free = new (place) Free{slab->free};
    --slab->live;
    if (slab->pool && !slab->isOpen) {
        slab->isOpen = true;
        slab->nextOpen = std::exchange(slab->pool->open_, slab);
    }
    freeIfDone(slab);
}

#endif

inline void SlabPool::addBlock() {
    if (!slabs_ || slabs_->blockEnd == slabs_->end)
        return addSlab();
    char* block = slabs_->blockEnd;
    new (block) Block{slabs_};
    slabs_->unused = block + sizeof(Block);
    slabs_->blockEnd = block + blockSize;
}

inline void SlabPool::addSlab() {
    constexpr std::size_t manySlabs = 16; // 4 MiB: a large slab then wastes at most a third
    const std::size_t size = slabCount_ == 0 ? smallSlab : slabCount_ < manySlabs ? mediumSlab : largeSlab;
    char* memory = static_cast<char*>(takeSlab(size));
    ++slabCount_;
    slabs_ = new (memory) Slab{
        {nullptr}, this, slabs_, nullptr, false, 0, nullptr, memory + sizeof(Slab), memory + blockSize, memory + size};
    slabs_->block.slab = slabs_;
}

inline void* Pooled::operator new(std::size_t, SlabPool& pool) { return pool.allocate(); }
inline void Pooled::operator delete(void* place, SlabPool&) noexcept { SlabPool::release(place); }
// NOLINTNEXTLINE(misc-new-delete-overloads): the matching operator new takes a pool
inline void Pooled::operator delete(void* place) noexcept { SlabPool::release(place); }

} // namespace vor::velmo_sdk::impl
