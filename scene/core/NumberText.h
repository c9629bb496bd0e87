// Numbers from text and back. The one place where either happens, but for
// the short way from text to number in PlainNumber.h; independent of any locale.
//
// All parsers take a whole text with optional spaces around it, return whether it is a number of the
// type, and leave `out` alone when it is not. They are linear in the length and allocate nothing.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <string_view>

namespace vor {

// `true` or `false` in any case, `1` or `0`.
[[nodiscard]] VRN_API bool parseBool(std::string_view text, bool& out);

// An optional sign and digits, then optionally a decimal exponent (`e5`, never negative) and one `u`
// or `U`. A number that does not fit the type is refused, and so is a minus sign before an unsigned.
// Instantiated for all integer types that String::parse offers.
template <class Integer>
[[nodiscard]] VRN_API bool parseInteger(std::string_view text, Integer& out, String::Radix radix);

// An optional sign, then digits with at most one point and optionally an exponent and one `f` or `F`;
// or `inf` or `nan` in any case. Rounded to the nearest value of the target type, ties to even, at any
// length; too large is an infinity and too small a subnormal or zero. Short numbers take the exact
// method of Clinger, "How to read floating point numbers accurately" (1990), all others fast_float's
// (Lemire, "Number parsing at a gigabyte per second", 2021).
[[nodiscard]] VRN_API bool parseReal(std::string_view text, float& out);
[[nodiscard]] VRN_API bool parseReal(std::string_view text, double& out);

// The first `count` parts of `text`, at most mostReals, separated by one or more spaces, as reals. False with nothing
// changed when there are fewer parts; otherwise every part is read into its place and the result says
// whether all were numbers.
inline constexpr u64 mostReals = 16;
[[nodiscard]] VRN_API bool parseReals(std::string_view text, u64 count, double* out);

// The same for the four components of a colour; with only three numbers, the fourth is 1.
[[nodiscard]] VRN_API bool parseColourReals(std::string_view text, double* out);

// The shortest decimal text that reads back as the same value, `inf`, `-inf` or `nan`. The view is
// into `buffer`.
inline constexpr std::size_t realTextCapacity = 32;
[[nodiscard]] VRN_API std::string_view writeReal(float value, char (&buffer)[realTextCapacity]);
[[nodiscard]] VRN_API std::string_view writeReal(double value, char (&buffer)[realTextCapacity]);

} // namespace vor
