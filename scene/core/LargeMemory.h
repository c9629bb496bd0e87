// Huge pages for large allocations.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __linux__
#    include <sys/mman.h>
#endif

namespace vor {

// The usual size of a huge page.
inline constexpr std::size_t largePage = std::size_t(2) << 20;

// Asks the system to back newly allocated, untouched memory with huge pages: page faults on a gigabyte of small pages
// take as long as parsing a gigabyte of numbers. Has no effect on small blocks or without huge pages.
inline void preferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
    const std::size_t before = -reinterpret_cast<std::uintptr_t>(memory) % largePage; // bytes up to the first boundary
    if (size >= before + largePage)
        (void)::madvise(static_cast<char*>(memory) + before, (size - before) / largePage * largePage, MADV_HUGEPAGE);
#endif
}

} // namespace vor
