// The parts of writeNumberList() that use vector instructions.
#pragma once

#include "scene/core/NumberLists.h"

namespace vor {

// How far a list has been written.
struct ListProgress {
    std::size_t numbers;
    char* end;
};

// As writeNumberList(), for numbers of 16 bits or more, and not for doubles with 128 bits. They stop before a group of
// eight or sixteen with a number that needs the general path, or when fewer are left. The processor must have Vector128
// or Avx512.
template <class Number> ListProgress writeGroups128(std::span<const Number> numbers, char* out) noexcept;
template <class Number> ListProgress writeGroupsAvx512(std::span<const Number> numbers, char* out) noexcept;

} // namespace vor
