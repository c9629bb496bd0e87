// The shortest decimal that reads back as a given real number, for the numbers that most scenes are made of.
//
// A real number stands for all numbers that round to it. Among the decimals there, the ones with the fewest digits
// are looked for, and of these the nearest; see Giulietti, "The Schubfach way to render doubles" (2020). Limited to
// numbers that may have a fraction (below 2^53 for double, 2^24 for float) and are not too small, powers of five and
// what is multiplied by them fit their words, so that all of the arithmetic is exact.
#pragma once

#include "scene/core/Types.h"

#include <array>
#include <concepts>

namespace vor::detail {

__extension__ using u128 = unsigned __int128;

// floor(log10(2^q)) and floor(log10(3/4 2^q)), for more exponents than there are.
constexpr i32 log10OfPower(i32 q) noexcept { return (q * 1262611) >> 22; }
constexpr i32 log10OfThreeQuarters(i32 q) noexcept { return (q * 1262611 - 524031) >> 22; }

// 5^e for all e that the numbers ask for.
template <std::size_t count> constexpr std::array<u64, count> firstPowersOfFive() noexcept {
    std::array<u64, count> powers{};
    u64 power = 1;
    for (u64& slot : powers) {
        slot = power;
        power *= 5;
    }
    return powers;
}
inline constexpr std::array<u64, 23> powersOfFive = firstPowersOfFive<23>();

template <class Real> struct RealForm;
template <> struct RealForm<float> {
    using Bits = u32;
    using Product = u64; // of four times a mantissa and a power of five
    static constexpr i32 mantissaBits = 23;
    static constexpr i32 bias = 150;
    static constexpr u32 digits = 9; // that a shortest decimal may have
};
template <> struct RealForm<double> {
    using Bits = u64;
    using Product = u128;
    static constexpr i32 mantissaBits = 52;
    static constexpr i32 bias = 1075;
    static constexpr u32 digits = 17;
};

// digits / 10^places; the digits may end with zeros.
struct ShortestDecimal {
    u64 digits;
    i32 places;
};

// The bits, without the sign's, of the numbers for which shortestDecimal() holds: from 2^-17 to the last that may have
// a fraction.
template <std::floating_point Real>
constexpr u64 leastMiddling = u64(RealForm<Real>::bias - RealForm<Real>::mantissaBits - 17)
                              << RealForm<Real>::mantissaBits;
template <std::floating_point Real>
constexpr u64 endOfMiddling = u64(RealForm<Real>::bias + 1) << RealForm<Real>::mantissaBits;

template <std::floating_point Real> [[nodiscard]] inline bool isMiddling(u64 bits) noexcept {
    return bits - leastMiddling<Real> < endOfMiddling<Real> - leastMiddling<Real>;
}

// There is no branch that depends on the number.
template <std::floating_point Real> [[nodiscard]] inline ShortestDecimal shortestDecimal(u64 bits) noexcept {
    using Form = RealForm<Real>;
    constexpr u64 hiddenBit = u64(1) << Form::mantissaBits;
    const u64 fraction = bits & (hiddenBit - 1);
    const u64 mantissa = fraction | hiddenBit;
    const i32 q = static_cast<i32>(bits >> Form::mantissaBits) - Form::bias;
    // Below a power of two the numbers stand twice as dense.
    const bool isLowerCloser = fraction == 0;
    const i32 k = isLowerCloser ? log10OfThreeQuarters(q) : log10OfPower(q);

    // The number in units of 10^k, as a fixed-point number: what is left of 2^q * 10^-k is a power of five, and a power
    // of two that says where the point is. Two more bits hold the halves between two numbers.
    const u64 power = powersOfFive[static_cast<std::size_t>(-k)];
    const i32 point = 2 - (q - k);
    const auto product = static_cast<typename Form::Product>(4 * mantissa) * power;
    const u64 units = static_cast<u64>(product >> point);
    const u64 one = u64(1) << point;
    const u64 rest = static_cast<u64>(product) & (one - 1);
    // How far what rounds to it reaches to both sides. The ends belong to it if it is even.
    const u64 odd = mantissa & 1;
    const u64 below = (isLowerCloser ? power : 2 * power) - odd;
    const u64 above = 2 * power - odd;

    // With one digit less, if just one of the two neighbours belongs; the ends are less than ten units apart.
    const u64 tens = units / 10;
    const u64 restOfTens = (units - 10 * tens) * one + rest;
    const bool isTensIn = restOfTens <= below;
    const bool isNextTensIn = 10 * one - restOfTens <= above;
    // Else the nearer one, of two as near the even one. It belongs, for what rounds to the number reaches as far to
    // both sides; to powers of two it does not, and the tests look at each of them.
    const bool isNextNearer = 2 * rest + (units & 1) > one;
    const bool isShorter = isTensIn != isNextTensIn;
    return {isShorter ? 10 * (tens + isNextTensIn) : units + isNextNearer, -k};
}

} // namespace vor::detail
