// Every allocation of the process, counted and failed at will: operator new, malloc, calloc, realloc and the aligned
// ones alike. Link Allocations.cpp to have it; not to be had together with a sanitizer, which has its own.
#pragma once

#include <cstddef>

namespace vrn::test {

enum class Failing {
    One,        // the nth allocation fails, the others do not
    AllBehindIt // and all behind it
};

// From here on the nth allocation of this thread fails. 0: none does.
void failAllocation(std::size_t nth, Failing which = Failing::One) noexcept;

// Lets allocations be again; whether one has failed.
bool stopFailing() noexcept;

// How many blocks of memory this process holds, their bytes, and the most bytes since the last forgetPeak().
[[nodiscard]] std::size_t liveBlocks() noexcept;
[[nodiscard]] std::size_t liveBytes() noexcept;
[[nodiscard]] std::size_t peakBytes() noexcept;
void forgetPeak() noexcept;

} // namespace vrn::test
