// The memory of slabs, some of which each thread keeps for its next scene.
//
// The allocator of the C library returns large blocks to the system immediately. A program that reads many small scenes
// would then spend more time on page faults than on reading.
#pragma once

#include <cstddef>

namespace vor::velmo_sdk::impl {

// The size and alignment of the blocks that slabs consist of, and the sizes of a pool's slabs as it grows. The largest
// slab is a huge page.
inline constexpr std::size_t slabBlock = 32 * 1024;
inline constexpr std::size_t smallSlab = slabBlock;
inline constexpr std::size_t mediumSlab = 8 * slabBlock;
inline constexpr std::size_t largeSlab = 64 * slabBlock;

// Memory for a slab of one of these sizes, aligned to slabBlock. Throws std::bad_alloc.
[[nodiscard]] void* takeSlab(std::size_t size);

// Releases what takeSlab() returned, on any thread. Keeps small and medium slabs for reuse by this thread, up to 8
// MiB and until releaseSpareMemory() or the end of the thread.
void giveSlab(void* slab, std::size_t size) noexcept;

} // namespace vor::velmo_sdk::impl
