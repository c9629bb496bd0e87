#include "scene/SpareSlabs.h"

#include "scene/Scene.h"
#include "scene/core/LargeMemory.h"

#include <cstdlib>
#include <new>
#include <optional>
#include <pthread.h>
#include <utility>

namespace vor::velmo_sdk::impl {

static_assert(largeSlab == largePage);

namespace {

constexpr std::size_t maxSpareBytes = 8 << 20;

struct Spare {
    Spare* next;
};

// Trivially destructible, because scenes may be destroyed after the variables of their thread.
struct Spares {
    Spare* small;
    Spare* medium;
    std::size_t bytes;
};
constinit thread_local Spares spares{};

Spare** listOf(std::size_t size) noexcept {
    if (size == smallSlab)
        return &spares.small;
    return size == mediumSlab ? &spares.medium : nullptr;
}

// Frees the spares of this thread when it ends. Fails without memory or keys. A destructor of a thread_local variable
// would do the same, but registering one ends the process if there is no memory.
bool freeAtEndOfThread() noexcept {
    static const std::optional<pthread_key_t> key = []() -> std::optional<pthread_key_t> {
        pthread_key_t created{};
        if (::pthread_key_create(&created, [](void*) { releaseSpareMemory(); }) != 0)
            return std::nullopt;
        return created;
    }();
    return key && ::pthread_setspecific(*key, &spares) == 0;
}

} // namespace

void* takeSlab(std::size_t size) {
    if (Spare** list = listOf(size); list && *list) {
        spares.bytes -= size;
        return std::exchange(*list, (*list)->next);
    }
    void* slab = std::aligned_alloc(size == largeSlab ? largePage : slabBlock, size);
    if (!slab)
        throw std::bad_alloc();
    preferLargePages(slab, size);
    return slab;
}

void giveSlab(void* slab, std::size_t size) noexcept {
    Spare** list = listOf(size);
    if (!list || spares.bytes + size > maxSpareBytes || !freeAtEndOfThread())
        return std::free(slab);
    *list = new (slab) Spare{*list};
    spares.bytes += size;
}

void releaseSpareMemory() noexcept {
    for (Spare** list : {&spares.small, &spares.medium})
        while (Spare* spare = *list) {
            *list = spare->next;
            std::free(spare);
        }
    spares.bytes = 0;
}

} // namespace vor::velmo_sdk::impl
