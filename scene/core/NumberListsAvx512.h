// The lists of numbers, as far as AVX-512 writes them.
#pragma once

#include "scene/core/NumberLists.h"

#if defined(__x86_64__)

namespace vor {

// How far a list has been written.
struct ListProgress {
    std::size_t numbers;
    char* end;
};

// As writeNumberList(), but only as many numbers as go eight at a time, from the first one on: it stops where one of
// eight has to be written the long way, or there are fewer. For numbers of 16 bits and more.
template <class Number> ListProgress writeEightsAvx512(std::span<const Number> numbers, char* out) noexcept;

} // namespace vor

#endif
