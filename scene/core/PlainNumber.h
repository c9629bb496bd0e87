// The fast path from text to number, for the plain decimals that most of a scene consists of.
//
//     double number = 0;
//     const char* next = takePlainNumber(at, end, number);   // null: use NumberText.h
//
// Reads `-?digits` as an integer or `-?digits(.digits)?` as a real from the front of a longer text. It accepts only
// what it can convert exactly, and leaves the rest (exponents, suffixes, many digits, integers out of range) to the
// parsers of NumberText.h, which return the same value for all that it accepts. Eight digits are read as one 64-bit
// word; see Lemire, "Number parsing at a gigabyte per second" (2021). Allocates nothing and never reads past `end`.
#pragma once

#include "scene/core/Types.h"

#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vor {

namespace detail {

struct DigitRun {
    u64 value = 0;
    u32 count = 0;
};

inline constexpr u64 eightOnes = 0x0101010101010101;
inline constexpr u64 eightZeros = eightOnes * '0';

// The number of bits of the leading digits of eight characters: 0, 8, ... 64.
inline u32 bitsOfDigits(u64 characters) noexcept {
    const u64 digits = characters ^ eightZeros; // 0 to 9 in the bytes of digits
    // The top bit of every byte above 9: adding 0x80 - 10 to the low seven bits sets it from 10 on, without a carry.
    const u64 others = (((digits & (eightOnes * 0x7F)) + eightOnes * (0x80 - 10)) | digits) & (eightOnes * 0x80);
    return static_cast<u32>(std::countr_zero(others)) & ~7U;
}

// The value of the digits in the lowest `bits`, which are not 0, of eight characters.
inline u64 valueOfDigits(u64 characters, u32 bits) noexcept {
    u64 digits = (characters ^ eightZeros) << (64 - bits); // pads with leading zeros
    digits = digits * 10 + (digits >> 8);                  // bytes 0, 2, 4, 6 hold the pairs of digits a, b, c, d
    // (a + c * 2^32) * (100 + 10^6 * 2^32) has a * 10^6 + c * 100 in its upper half, and likewise for b and d. The
    // lower halves, a * 100 and b, do not carry.
    constexpr u64 everyOtherPair = 0xFF | u64(0xFF) << 32;
    constexpr u64 weightsOfAC = 100 | u64(1000000) << 32;
    constexpr u64 weightsOfBD = 1 | u64(10000) << 32;
    const u64 low = (digits & everyOtherPair) * weightsOfAC;
    const u64 high = (digits >> 16 & everyOtherPair) * weightsOfBD;
    return (low + high) >> 32;
}

// The leading digits of eight characters.
inline DigitRun leadingDigits(const char* text) noexcept {
    u64 word;
    std::memcpy(&word, text, sizeof word);
    const u32 bits = bitsOfDigits(word);
    return bits == 0 ? DigitRun{} : DigitRun{valueOfDigits(word, bits), bits / 8};
}

// The digits of a decimal with a point that ends within eight characters, all converted together: the point is taken
// out of the word. The count is 0 if there is no such decimal; `places` is the number of digits after the point.
inline DigitRun leadingDecimal(const char* text, u32& places) noexcept {
    u64 word;
    std::memcpy(&word, text, sizeof word);
    const u32 whole = bitsOfDigits(word);
    if (whole == 0 || whole == 64 || (word >> whole & 0xFF) != '.')
        return {};
    const u64 before = (u64(1) << whole) - 1;
    const u64 joined = (word & before) | (word >> 8 & ~before); // the highest byte is 0, which is no digit
    const u32 bits = bitsOfDigits(joined);
    if (bits == 56)
        return {}; // may continue
    places = (bits - whole) / 8;
    return {valueOfDigits(joined, bits), bits / 8};
}

inline constexpr u64 powersOfTen[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};

// Any number of 19 digits fits 64 bits: 10^19 < 2^64.
inline constexpr u32 maxDigits = 19;

// Appends the digits at `text` to `number`, up to maxDigits in total; returns the position after them. Works digit by
// digit where fewer than eight characters remain, and on big-endian processors.
inline const char* takeDigits(const char* text, const char* end, DigitRun& number) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
        while (end - text >= 8) {
            const DigitRun run = leadingDigits(text);
            if (number.count + run.count > maxDigits)
                return text; // at a digit, so that the caller falls back to the long path
            number.value = number.value * powersOfTen[run.count] + run.value;
            number.count += run.count;
            text += run.count;
            if (run.count < 8)
                return text;
        }
    }
    while (text != end && *text >= '0' && *text <= '9' && number.count < maxDigits) {
        number.value = number.value * 10 + static_cast<u64>(*text++ - '0');
        ++number.count;
    }
    return text;
}

inline constexpr double exactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                              1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};

// Integers up to here are doubles.
inline constexpr i64 maxExactInteger = i64(1) << std::numeric_limits<double>::digits;

// Converting a correctly rounded double to float rounds a second time. That changes the result only if the double is
// exactly halfway between two floats: the mantissa bits that a float lacks are a one and zeros. The decimal may have
// been on either side of that.
inline constexpr i64 floatTie =
    i64(1) << (std::numeric_limits<double>::digits - std::numeric_limits<float>::digits - 1);
inline constexpr i64 floatTailMask = 2 * floatTie - 1;

// digits / 10^places, rounded to nearest; false if one division does not guarantee that. The quotient of an integer of
// up to 53 bits and an exact power of ten is rounded only once (Clinger 1990).
template <class Real> [[nodiscard]] inline bool divide(u64 digits, u32 places, Real& out) noexcept {
    if (digits > u64(maxExactInteger))
        return false;
    const double value = static_cast<double>(digits) / exactPowersOfTen[places];
    if constexpr (sizeof(Real) == sizeof(float)) {
        if ((std::bit_cast<u64>(value) & u64(floatTailMask)) == u64(floatTie))
            return false;
    }
    out = static_cast<Real>(value);
    return true;
}

// The same for any digits and up to maxDigits places, where a product of 128 bits always decides the rounding (Lemire,
// "Number parsing at a gigabyte per second", 2021).
template <class Real> [[nodiscard]] Real roundDecimal(u64 digits, u32 places) noexcept;
extern template float roundDecimal(u64, u32) noexcept;
extern template double roundDecimal(u64, u32) noexcept;

// The real with these digits, the last `places` of them after the point.
template <class Real> [[nodiscard]] inline Real realOf(const DigitRun& digits, u32 places, bool isNegative) noexcept {
    Real value = 0;
    if (!divide(digits.value, places, value))
        value = roundDecimal<Real>(digits.value, places);
    return isNegative ? -value : value;
}

} // namespace detail

// Reads a number at `text`; returns the position after it, or null if the general parser is needed. The caller checks
// whether the next character may follow a number.
template <class Integer>
requires std::is_integral_v<Integer>
[[nodiscard]] inline const char* takePlainNumber(const char* text, const char* end, Integer& out) noexcept {
    using Limits = std::numeric_limits<Integer>;
    const bool minus = Limits::is_signed && text != end && *text == '-';
    detail::DigitRun number;
    text = detail::takeDigits(text + (minus ? 1 : 0), end, number);
    if (number.count == 0 || number.value > static_cast<u64>(Limits::max()) + (minus ? 1 : 0))
        return nullptr;
    out = static_cast<Integer>(minus ? 0 - number.value : number.value);
    return text;
}

template <class Real>
requires std::is_floating_point_v<Real>
[[nodiscard]] inline const char* takePlainNumber(const char* text, const char* end, Real& out) noexcept {
    const bool minus = text != end && *text == '-';
    text += minus ? 1 : 0;
    if constexpr (std::endian::native == std::endian::little && sizeof(Real) == sizeof(double)) {
        u32 places = 0;
        const detail::DigitRun number = end - text >= 8 ? detail::leadingDecimal(text, places) : detail::DigitRun{};
        if (number.count != 0) { // at most six digits: one division, rounded once
            const Real value = static_cast<Real>(static_cast<i64>(number.value)) / detail::exactPowersOfTen[places];
            out = minus ? -value : value;
            return text + number.count + 1;
        }
    }
    detail::DigitRun number;
    text = detail::takeDigits(text, end, number);
    const u32 whole = number.count;
    if (text != end && *text == '.')
        text = detail::takeDigits(text + 1, end, number);
    if (number.count == 0)
        return nullptr;
    out = detail::realOf<Real>(number, number.count - whole, minus);
    return text;
}

// Reads an integer, or a real if digits are followed by a point; `isReal` reports which of the two is set.
[[nodiscard]] inline const char* takePlainNumber(const char* text, const char* end, i64& integer, double& real,
                                                 bool& isReal) noexcept {
    const char* const next = takePlainNumber(text, end, integer);
    isReal = next && next != end && *next == '.';
    return isReal ? takePlainNumber(text, end, real) : next;
}

} // namespace vor
