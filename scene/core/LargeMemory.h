// Memory in pieces of megabytes.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __linux__
#    include <sys/mman.h>
#endif

namespace vor {

// The size of a large page, as common processors have it.
inline constexpr std::size_t largePage = std::size_t(2) << 20;

// Asks the system to back what it can of a new, untouched piece of memory with large pages: touching a
// gigabyte of small ones for the first time costs as much as reading a gigabyte of numbers. Harmless where
// the system has none, and for small pieces.
inline void preferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(memory) % largePage; // up to the first whole one
    if (size >= before + largePage)
        (void)::madvise(static_cast<char*>(memory) + before, (size - before) / largePage * largePage, MADV_HUGEPAGE);
#endif
}

} // namespace vor
