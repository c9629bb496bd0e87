// The shortest decimal that reads back as a given real number, for the magnitudes that most scenes use.
//
//     if (isInFastRange<double>(bits))                                  // the bits of 0.25, without the sign
//         const auto [digits, places] = shortestDecimal<double>(bits);  // 25 * 10^15 and 17
//
// Every decimal within half a unit in the last place of a real rounds to it. Of these the function returns one with the
// fewest digits, and the nearest among several; see Giulietti, "The Schubfach way to render doubles" (2020). The range
// is limited to numbers that may have a fraction (below 2^53 for double, 2^24 for float) and are at least 2^-17. There
// the powers of five and their products fit a word, so that all arithmetic is exact and no branch depends on the
// number.
#pragma once

#include "scene/core/Types.h"

#include <array>
#include <concepts>

namespace vor::detail {

__extension__ using u128 = unsigned __int128;

// floor(log10(2^q)) and floor(log10(3/4 * 2^q)) in fixed point, checked below for all exponents that occur.
inline constexpr i32 logFractionBits = 22;
inline constexpr i32 log10OfTwo = 1262611;       // 0.30103 * 2^22 = 1262611.4
inline constexpr i32 log10OfFourThirds = 524031; // 0.12494 * 2^22 = 524031.04
constexpr i32 log10OfPower(i32 q) noexcept { return (q * log10OfTwo) >> logFractionBits; }
constexpr i32 log10OfThreeQuarters(i32 q) noexcept { return (q * log10OfTwo - log10OfFourThirds) >> logFractionBits; }

template <std::size_t count> constexpr std::array<u64, count> firstPowersOfFive() noexcept {
    std::array<u64, count> powers{};
    u64 power = 1;
    for (u64& slot : powers) {
        slot = power;
        power *= 5;
    }
    return powers;
}

// The layout of a real: (2^mantissaBits + fraction) * 2^(exponent bits - bias), so `bias` is that of IEEE 754 for a
// mantissa taken as an integer.
template <class Real> struct RealForm;
template <> struct RealForm<float> {
    using Bits = u32;
    using Product = u64; // fits 4 * mantissa * power of five: 2 + 24 + 31 bits
    static constexpr i32 mantissaBits = 23;
    static constexpr i32 bias = 127 + mantissaBits;
    static constexpr u32 digits = 9; // the longest shortest decimal
};
template <> struct RealForm<double> {
    using Bits = u64;
    using Product = u128; // fits 4 * mantissa * power of five: 2 + 53 + 49 bits
    static constexpr i32 mantissaBits = 52;
    static constexpr i32 bias = 1023 + mantissaBits;
    static constexpr u32 digits = 17;
};

// The fast range starts at 2^minFastExponent.
inline constexpr i32 minFastExponent = -17;

// The exponents k of ten are those of 2^q with q from here, for double, to 0; each needs 5^-k.
inline constexpr i32 minScale = minFastExponent - RealForm<double>::mantissaBits;
inline constexpr auto powersOfFive = firstPowersOfFive<1 - log10OfThreeQuarters(minScale)>();

// 10^k <= x < 10^(k + 1) for x = 2^q and for x = 3/4 * 2^q, scaled by 2^-q * 10^-k and, for the second, by 4.
consteval bool areLogarithmsExact() {
    const auto powerOfTen = [](i32 exponent) {
        u128 power = 1;
        while (exponent-- > 0)
            power *= 10;
        return power;
    };
    for (i32 q = minScale; q <= 0; ++q) {
        const i32 k = log10OfPower(q);
        const i32 l = log10OfThreeQuarters(q);
        const u128 inverse = u128(1) << -q;
        if (k < 0 ? powerOfTen(-k) < inverse || powerOfTen(-k - 1) >= inverse : q != 0)
            return false;
        if (3 * powerOfTen(-l) < 4 * inverse || 3 * powerOfTen(-l - 1) >= 4 * inverse)
            return false;
    }
    return true;
}
static_assert(areLogarithmsExact());

// digits / 10^places; the digits may end with zeros.
struct ShortestDecimal {
    u64 digits;
    i32 places;
};

// The bits, without the sign, of the numbers that shortestDecimal() accepts: from 2^minFastExponent up to, and not
// including, the first number whose neighbours are more than 1 apart.
template <std::floating_point Real>
constexpr u64 minFastBits = u64(RealForm<Real>::bias - RealForm<Real>::mantissaBits + minFastExponent)
                            << RealForm<Real>::mantissaBits;
template <std::floating_point Real>
constexpr u64 endOfFastBits = u64(RealForm<Real>::bias + 1) << RealForm<Real>::mantissaBits;

template <std::floating_point Real> [[nodiscard]] inline bool isInFastRange(u64 bits) noexcept {
    return bits - minFastBits<Real> < endOfFastBits<Real> - minFastBits<Real>;
}

// All ones if true, for selecting without a branch: compilers turn conditional operators into jumps, which processors
// cannot predict here.
constexpr u64 maskOf(bool condition) noexcept { return 0 - u64(condition); }

// `bits` must be in the fast range. Branch-free.
template <std::floating_point Real> [[nodiscard]] inline ShortestDecimal shortestDecimal(u64 bits) noexcept {
    using Form = RealForm<Real>;
    constexpr u64 hiddenBit = u64(1) << Form::mantissaBits;
    const u64 fraction = bits & (hiddenBit - 1);
    const u64 mantissa = fraction | hiddenBit;
    const i32 q = static_cast<i32>(bits >> Form::mantissaBits) - Form::bias;
    // Below a power of two, neighbours are half as far apart.
    const u64 ifLowerCloser = maskOf(fraction == 0);
    const i32 k = (q * log10OfTwo - (log10OfFourThirds & static_cast<i32>(ifLowerCloser))) >> logFractionBits;

    // The number in units of 10^k, in fixed point: 2^q * 10^-k is 5^-k times a power of two, which becomes the position
    // of the binary point. Two extra bits hold the midpoints between neighbours.
    const u64 power = powersOfFive[static_cast<std::size_t>(-k)];
    const i32 point = 2 - (q - k);
    const auto product = static_cast<typename Form::Product>(4 * mantissa) * power;
    const u64 units = static_cast<u64>(product >> point);
    const u64 one = u64(1) << point;
    const u64 rest = static_cast<u64>(product) & (one - 1);
    // The distances to the midpoints on both sides. A midpoint itself rounds to the even mantissa.
    const u64 odd = mantissa & 1;
    const u64 above = 2 * power - odd;
    const u64 below = above - (power & ifLowerCloser);

    // One digit fewer, if exactly one of the two multiples of ten around rounds to the number; the midpoints are less
    // than ten units apart.
    const u64 tens = units / 10;
    const u64 restOfTens = (units - 10 * tens) * one + rest;
    const bool isTensIn = restOfTens <= below;
    const bool isNextTensIn = 10 * one - restOfTens <= above;
    const u64 shorter = 10 * (tens + isNextTensIn);
    // Otherwise the nearest multiple of one, half to even. It rounds to the number, because the interval is symmetric;
    // for powers of two, where it is not, a test covers every one of them.
    const bool isNextNearer = 2 * rest + (units & 1) > one;
    const u64 nearest = units + isNextNearer;
    return {nearest ^ ((nearest ^ shorter) & maskOf(isTensIn != isNextTensIn)), -k};
}

} // namespace vor::detail
