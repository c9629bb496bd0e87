// Converts numbers from text and to text, independent of the locale. Only PlainNumber.h (a fast path) and NumberLists.h
// (lists) do the same.
//
//     double number = 0;
//     if (!parseReal(" 1.5e3 ", number)) ...       // false leaves `number` unchanged
//     char buffer[realTextCapacity];
//     writeReal(0.1, buffer);                      // "0.1"
//
// Parsers expect the whole text to be one number, optionally surrounded by white space, and return whether it is a
// number of the type; if not, `out` is unchanged. All functions are linear in the length, allocate nothing and are
// thread-safe.
#pragma once

#include "scene/core/Export.h"
#include "scene/core/String.h"

#include <string_view>

namespace vor {

// `true` or `false`, case-insensitive, `1` or `0`.
[[nodiscard]] VRN_API bool parseBool(std::string_view text, bool& out);

// An optional sign, digits, an optional non-negative exponent (`e5`, decimal only) and an optional `u` or `U`. Fails if
// the number does not fit the type, and for a minus sign before an unsigned number. Instantiated for the integer types
// of String::parse.
template <class Integer>
[[nodiscard]] VRN_API bool parseInteger(std::string_view text, Integer& out, String::Radix radix);

// An optional sign, digits with at most one point, an optional exponent and an optional `f` or `F`; or `inf` or `nan`,
// case-insensitive. Rounded half to even to the target type, for any length; overflow yields an infinity,
// underflow a subnormal or zero. Short numbers use the exact method of Clinger, "How to read floating point numbers
// accurately" (1990), all others fast_float (Lemire, "Number parsing at a gigabyte per second", 2021).
[[nodiscard]] VRN_API bool parseReal(std::string_view text, float& out);
[[nodiscard]] VRN_API bool parseReal(std::string_view text, double& out);

// Parses the first `count` (at most mostReals) parts of `text`, separated by one or more spaces. With fewer parts,
// returns false and changes nothing. Otherwise stores the parts that are numbers, each at its index, and returns
// whether all are.
inline constexpr u64 mostReals = 16;
[[nodiscard]] VRN_API bool parseReals(std::string_view text, u64 count, double* out);

// Parses the four components of a colour. If there is no fourth, or it is not a number, it is 1.
[[nodiscard]] VRN_API bool parseColourReals(std::string_view text, double* out);

// The shortest decimal text that reads back as the same value, or `inf`, `-inf`, `nan`. The result points into
// `buffer`.
inline constexpr std::size_t realTextCapacity = 32;
[[nodiscard]] VRN_API std::string_view writeReal(float value, char (&buffer)[realTextCapacity]);
[[nodiscard]] VRN_API std::string_view writeReal(double value, char (&buffer)[realTextCapacity]);

} // namespace vor
