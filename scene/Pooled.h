// Base class of the objects that a scene allocates from its own memory.
#pragma once

#include <cstddef>

namespace vor::velmo_sdk::impl {

class SlabPool;

// Objects are created with `new (pool) T(...)` by the scene, and destroyed with `delete` when nothing retains them.
struct Pooled {
    static void* operator new(std::size_t size, SlabPool& pool);
    static void operator delete(void* place, SlabPool& pool) noexcept;
    static void operator delete(void* place) noexcept; // NOLINT(misc-new-delete-overloads)
};

} // namespace vor::velmo_sdk::impl
