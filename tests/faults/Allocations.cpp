#include "tests/faults/Allocations.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <malloc.h>

// What stands behind the names below in the C library.
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
thread_local std::size_t untilFailure = 0; // 0: none is to come
thread_local bool isEachToFail = false;
thread_local bool hasFailed = false;
thread_local Failing which = Failing::One;

bool isToFail() noexcept {
    const bool isReached = untilFailure != 0 && --untilFailure == 0;
    if (!isReached && !isEachToFail)
        return false;
    hasFailed = true;
    isEachToFail = which == Failing::AllBehindIt;
    errno = ENOMEM;
    return true;
}

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
    isEachToFail = false;
    hasFailed = false;
    which = kind;
}

bool stopFailing() noexcept {
    untilFailure = 0;
    isEachToFail = false;
    return hasFailed;
}

std::size_t liveBlocks() noexcept { return blocks; }
std::size_t liveBytes() noexcept { return bytes; }
std::size_t peakBytes() noexcept { return peak; }
void forgetPeak() noexcept { peak = bytes.load(); }

} // namespace vrn::test

using namespace vrn::test;

extern "C" {

void* malloc(std::size_t size) { return isToFail() ? nullptr : counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) { return isToFail() ? nullptr : counted(__libc_calloc(count, size)); }
void* realloc(void* block, std::size_t size) {
    if (isToFail())
        return nullptr;
    uncount(block); // what is moved may be in two places for a while, but the pages of large blocks are not
    return counted(__libc_realloc(block, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return isToFail() ? nullptr : counted(__libc_memalign(alignment, size));
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
