// Many numbers to text at once: the lists that buffers are written as.
//
// What comes out is the shortest text that reads back as the same number, as writeReal() gives it, only that the point
// and the exponent may stand otherwise: plain decimals from 0.00001 on as far as a real has a fraction. NaNs keep their
// sign. The short way of writing a real has no branch that depends on the number; several are worked on at once.
#pragma once

#include "scene/core/Types.h"

#include <span>

namespace vor {

// The most characters that a number may take, its separator included, and how much more room the last one needs.
inline constexpr std::size_t listNumberCapacity = 34;
inline constexpr std::size_t listSlack = 64;

// Writes the numbers, a space behind each, to `out`, which has room for listNumberCapacity characters a number and
// listSlack more; returns the place behind the last space. Instantiated for the integers of 8 to 64 bits, float and
// double.
template <class Number> char* writeNumberList(std::span<const Number> numbers, char* out) noexcept;

} // namespace vor
