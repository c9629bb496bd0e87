// The AVX-512 part of writeNumberList().
#pragma once

#include "scene/core/NumberLists.h"

#if defined(__x86_64__)

namespace vor {

// How far a list has been written.
struct ListProgress {
    std::size_t numbers;
    char* end;
};

// As writeNumberList(), eight numbers at a time. Stops before a group of eight with a number that needs the general
// path, or when fewer than eight are left. For numbers of 16 bits or more.
template <class Number> ListProgress writeGroupsAvx512(std::span<const Number> numbers, char* out) noexcept;

} // namespace vor

#endif
