#include "tests/faults/Allocations.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>

// glibc's implementations of the functions below.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace vrn::test {

namespace {

std::atomic<std::size_t> blocks = 0;
std::atomic<std::size_t> bytes = 0;
std::atomic<std::size_t> peak = 0;
thread_local std::size_t untilFailure = 0; // 0: no failure is pending
thread_local bool failAll = false;
thread_local bool hasFailed = false;
thread_local Failing which = Failing::One;

bool mustFail() noexcept {
    const bool isReached = untilFailure != 0 && --untilFailure == 0;
    if (!isReached && !failAll)
        return false;
    hasFailed = true;
    failAll = which == Failing::AllAfterIt;
    errno = ENOMEM;
    return true;
}

// glibc maps large blocks separately, and leaves address space unused after those that are aligned. It takes no memory
// but would count. In its heap, glibc keeps nothing that a block does not need. The threshold is the greatest possible;
// no aligned block is as large.
constexpr int mapFrom = 32 << 20;
[[maybe_unused]] const bool isInHeap = mallopt(M_MMAP_THRESHOLD, mapFrom) == 1;

void* counted(void* block) noexcept {
    if (!block)
        return nullptr;
    ++blocks;
    bytes += malloc_usable_size(block);
    if (bytes > peak)
        peak = bytes.load();
    return block;
}

void uncount(void* block) noexcept {
    if (!block)
        return;
    --blocks;
    bytes -= malloc_usable_size(block);
}

} // namespace

void failAllocation(std::size_t nth, Failing kind) noexcept {
    untilFailure = nth;
    failAll = false;
    hasFailed = false;
    which = kind;
}

bool stopFailing() noexcept {
    untilFailure = 0;
    failAll = false;
    return hasFailed;
}

std::size_t liveBlocks() noexcept { return blocks; }
std::size_t liveBytes() noexcept { return bytes; }
std::size_t peakBytes() noexcept { return peak; }
void resetPeak() noexcept { peak = bytes.load(); }

} // namespace vrn::test

using namespace vrn::test;

extern "C" {

void* malloc(std::size_t size) { return mustFail() ? nullptr : counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) { return mustFail() ? nullptr : counted(__libc_calloc(count, size)); }
void* realloc(void* block, std::size_t size) {
    if (mustFail())
        return nullptr;
    uncount(block); // counts a moved block once: glibc remaps large blocks instead of copying them
    return counted(__libc_realloc(block, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return mustFail() ? nullptr : counted(__libc_memalign(alignment, size));
}
void* memalign(std::size_t alignment, std::size_t size) { return aligned_alloc(alignment, size); }
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    *block = aligned_alloc(alignment, size);
    return *block ? 0 : ENOMEM;
}
void free(void* block) {
    uncount(block);
    __libc_free(block);
}
}
