// Writes arrays of numbers as text: the lists that buffers are written as.
//
//     std::vector<char> text(numbers.size() * listNumberCapacity + listSlack);
//     const char* end = writeNumberList(std::span<const float>(numbers), text.data());   // "0.5 12 -3.25 "
//
// Each number becomes the shortest text that reads back as the same number. It has the digits that writeReal() returns
// but is a plain decimal without an exponent from 0.00001 up to the largest real that may have a fraction. NaNs keep
// their sign. Linear; allocates nothing; safe to call from several threads.
#pragma once

#include "scene/core/Types.h"

#include <span>

namespace vor {

// The longest number with its separator, and what the last one may overwrite after itself.
inline constexpr std::size_t listNumberCapacity = 34;
inline constexpr std::size_t listSlack = 64;

// Writes the numbers, each followed by a space, to `out`, which has capacity for listNumberCapacity characters per
// number plus listSlack; returns the position after the last space. Instantiated for integers of 8 to 64 bits, float
// and double.
template <class Number> char* writeNumberList(std::span<const Number> numbers, char* out) noexcept;

} // namespace vor
