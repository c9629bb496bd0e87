// The short way from text to number, for the plain decimals that most of a scene is made of.
//
// takePlainNumber() reads `-?digits` into an integer, `-?digits(.digits)?` into a real, straight from a
// text that goes on behind it. It takes what it can do exactly and leaves everything else (exponents,
// suffixes, many digits, numbers that do not fit) to the parsers of NumberText.h, which give the same
// value for what it takes. Up to eight digits are read at once as one 64-bit word; see Lemire, "Number
// parsing at a gigabyte per second" (2021).
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

// The digits at the start of eight characters.
inline DigitRun leadingDigits(const char* text) noexcept {
    constexpr u64 ones = 0x0101010101010101;
    u64 word;
    std::memcpy(&word, text, sizeof word);
    u64 digits = word ^ (ones * '0'); // 0 to 9 where there is a digit
    const u64 others = (((digits & (ones * 0x7F)) + ones * (0x80 - 10)) | digits) & (ones * 0x80);
    const u32 count = static_cast<u32>(std::countr_zero(others)) / 8;
    if (count == 0)
        return {};
    digits <<= (8 - count) * 8; // leading zeros
    digits = digits * 10 + (digits >> 8);
    const u64 low = (digits & 0x000000FF000000FF) * 0x000F424000000064;
    const u64 high = (digits >> 16 & 0x000000FF000000FF) * 0x0000271000000001;
    return {(low + high) >> 32, count};
}

inline constexpr u64 powersOfTen[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};

// As many digits always fit 64 bits.
inline constexpr u32 mostDigits = 19;

// Takes the digits at `text` into `number`, at most mostDigits in all; returns the place behind them. With
// fewer than eight characters left, or on a machine of the other byte order, one digit at a time.
inline const char* takeDigits(const char* text, const char* end, DigitRun& number) noexcept {
    if constexpr (std::endian::native == std::endian::little) {
        while (end - text >= 8) {
            const DigitRun run = leadingDigits(text);
            if (number.count + run.count > mostDigits)
                return text; // before a digit, where no number may end
            number.value = number.value * powersOfTen[run.count] + run.value;
            number.count += run.count;
            text += run.count;
            if (run.count < 8)
                return text;
        }
    }
    while (text != end && *text >= '0' && *text <= '9' && number.count < mostDigits) {
        number.value = number.value * 10 + static_cast<u64>(*text++ - '0');
        ++number.count;
    }
    return text;
}

inline constexpr double exactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,
                                              1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};

// digits / 10^places, rounded to the nearest; false where one division does not give that. An integer of 53
// bits over an exact power of ten is rounded once (Clinger 1990).
template <class Real> [[nodiscard]] inline bool divide(u64 digits, u32 places, Real& out) noexcept {
    if (digits > u64(1) << 53)
        return false;
    const double value = static_cast<double>(digits) / exactPowersOfTen[places];
    if constexpr (sizeof(Real) == sizeof(float)) {
        // Rounding twice goes wrong only where the double looks like a tie between two floats.
        constexpr u64 tie = 0x10000000;
        if ((std::bit_cast<u64>(value) & (2 * tie - 1)) == tie)
            return false;
    }
    out = static_cast<Real>(value);
    return true;
}

// The same for any digits and up to mostDigits places, for which 128 bits always tell what is nearest (Lemire,
// "Number parsing at a gigabyte per second", 2021).
template <class Real> [[nodiscard]] Real roundDecimal(u64 digits, u32 places) noexcept;
extern template float roundDecimal(u64, u32) noexcept;
extern template double roundDecimal(u64, u32) noexcept;

} // namespace detail

// Reads a number at `text`; returns the place behind it, or null if the long way has to be taken.
// Whether a number may end there is for the caller to see.
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
    detail::DigitRun number;
    text = detail::takeDigits(text + (minus ? 1 : 0), end, number);
    const u32 whole = number.count;
    if (text != end && *text == '.')
        text = detail::takeDigits(text + 1, end, number);
    if (number.count == 0)
        return nullptr;
    const u32 places = number.count - whole;
    if (!detail::divide(number.value, places, out))
        out = detail::roundDecimal<Real>(number.value, places);
    out = minus ? -out : out;
    return text;
}

} // namespace vor
