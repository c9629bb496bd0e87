// Counts all allocations of the process (malloc, calloc, realloc, the aligned variants, and operator new through them)
// and injects failures. Works by linking Allocations.cpp; cannot be combined with a sanitizer, which replaces them as
// well.
#pragma once

#include <cstddef>

namespace vrn::test {

enum class Failing {
    One,       // only the nth allocation fails
    AllAfterIt // it and all after it fail
};

// Makes the nth allocation of this thread from now on fail; 0: none.
void failAllocation(std::size_t nth, Failing which = Failing::One) noexcept;

// Stops injecting failures; returns whether an allocation has failed.
bool stopFailing() noexcept;

// The blocks and bytes that the process has allocated, and the peak of the bytes since the last resetPeak().
[[nodiscard]] std::size_t liveBlocks() noexcept;
[[nodiscard]] std::size_t liveBytes() noexcept;
[[nodiscard]] std::size_t peakBytes() noexcept;
void resetPeak() noexcept;

} // namespace vrn::test
