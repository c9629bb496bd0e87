// The shortest decimal that reads back as a given real number, for the numbers that most scenes are made of.
//
// A real number stands for all numbers that round to it. Among the decimals there, the ones with the fewest digits
// are looked for, and of these the nearest; see Giulietti, "The Schubfach way to render doubles" (2020). Limited to
// numbers with a fraction (below 2^53 for double, 2^24 for float) and not too small, all of the arithmetic is
// exact, as the powers of ten fit the words.
#pragma once

#include "scene/core/Types.h"

#include <array>
#include <bit>
#include <concepts>

namespace vor::detail {

__extension__ using u128 = unsigned __int128;

// floor(log10(2^q)), floor(log10(3/4 2^q)) and floor(log2(10^e)), for more exponents than there are.
constexpr i32 log10OfPower(i32 q) noexcept { return (q * 1262611) >> 22; }
constexpr i32 log10OfThreeQuarters(i32 q) noexcept { return (q * 1262611 - 524031) >> 22; }
constexpr i32 log2OfPowerOfTen(i32 e) noexcept { return (e * 1741647) >> 19; }

// 10^e, shifted so that the highest bit of the word is set.
template <class Word, std::size_t count> constexpr std::array<Word, count> shiftedPowersOfTen() {
    std::array<Word, count> powers{};
    Word power = 1;
    for (std::size_t e = 0; e < count; ++e, power *= 10)
        powers[e] = power << (static_cast<i32>(sizeof(Word) * 8) - 1 - log2OfPowerOfTen(static_cast<i32>(e)));
    return powers;
}

template <class Real> struct RealForm;
template <> struct RealForm<float> {
    using Bits = u32;
    static constexpr i32 mantissaBits = 23;
    static constexpr i32 bias = 150;
    static constexpr u32 digits = 9; // that a shortest decimal may have
    static constexpr std::array<u64, 19> powers = shiftedPowersOfTen<u64, 19>();

    // power * factor / 2^64, with the last bit set if that is no whole number.
    static u32 scale(u64 power, u32 factor) noexcept {
        const u64 low = u64(static_cast<u32>(power)) * factor;
        const u64 sum = (power >> 32) * factor + (low >> 32);
        const u32 rest = static_cast<u32>(sum) | static_cast<u32>(low);
        return static_cast<u32>(sum >> 32) | (rest != 0 ? 1U : 0U);
    }
};
template <> struct RealForm<double> {
    using Bits = u64;
    static constexpr i32 mantissaBits = 52;
    static constexpr i32 bias = 1075;
    static constexpr u32 digits = 17;
    static constexpr std::array<u128, 28> powers = shiftedPowersOfTen<u128, 28>();

    static u64 scale(u128 power, u64 factor) noexcept {
        const u128 low = u128(static_cast<u64>(power)) * factor;
        const u128 sum = u128(static_cast<u64>(power >> 64)) * factor + static_cast<u64>(low >> 64);
        const u64 rest = static_cast<u64>(sum) | static_cast<u64>(low);
        return static_cast<u64>(sum >> 64) | (rest != 0 ? 1U : 0U);
    }
};

// digits * 10^exponent; the digits may end with zeros.
template <class Bits> struct ShortestDecimal {
    Bits digits;
    i32 exponent;
};

// Whether the arithmetic below holds for a number of these bits, sign left aside: zero, or one from 0.00001 (for
// double: from 2^-17) to the last that may have a fraction.
template <std::floating_point Real> constexpr bool isPlainReal(typename RealForm<Real>::Bits bits) noexcept {
    using Form = RealForm<Real>;
    using Bits = typename Form::Bits;
    constexpr Bits least = Bits(Form::bias - Form::mantissaBits - 17) << Form::mantissaBits;
    constexpr Bits end = Bits(Form::bias + 1) << Form::mantissaBits;
    return bits - least < end - least || bits == 0;
}

// Of the positive number with these bits, for which the function above is true.
template <std::floating_point Real>
ShortestDecimal<typename RealForm<Real>::Bits> shortestDecimal(typename RealForm<Real>::Bits bits) noexcept {
    using Form = RealForm<Real>;
    using Bits = typename Form::Bits;
    constexpr Bits hiddenBit = Bits(1) << Form::mantissaBits;
    const Bits fraction = bits & (hiddenBit - 1);
    const Bits mantissa = bits == 0 ? 0 : fraction | hiddenBit;
    const i32 q = bits == 0 ? 0 : static_cast<i32>(bits >> Form::mantissaBits) - Form::bias;
    // Below a power of two the numbers stand twice as dense.
    const bool isLowerCloser = fraction == 0;
    const i32 k = isLowerCloser ? log10OfThreeQuarters(q) : log10OfPower(q);
    const auto power = Form::powers[static_cast<std::size_t>(-k)];
    const i32 shift = q + log2OfPowerOfTen(-k) + 1;

    // Four times the number and the ends of what rounds to it, in units of 10^k. Ends belong to it if it is even.
    const Bits four = 4 * mantissa;
    const Bits middle = Form::scale(power, four << shift);
    const Bits odd = mantissa & 1;
    const Bits lower = Form::scale(power, (four - 2 + Bits(isLowerCloser)) << shift) + odd;
    const Bits upper = Form::scale(power, (four + 2) << shift) - odd;

    // With one digit less, if just one of the two neighbours belongs; the ends are less than ten units apart.
    const Bits units = middle / 4;
    const Bits tens = units / 10;
    const bool isTensIn = lower <= 40 * tens;
    const bool isNextTensIn = 40 * tens + 40 <= upper;
    const bool isShorter = isTensIn != isNextTensIn && units >= 10;
    // Else whichever belongs, or the nearer one, of two as near the even one.
    const bool isUnitsIn = lower <= 4 * units;
    const bool isNextUnitsIn = 4 * units + 4 <= upper;
    const Bits half = 4 * units + 2;
    const bool isNextNearer = middle > half || (middle == half && (units & 1) != 0);
    const bool isNext = isUnitsIn != isNextUnitsIn ? isNextUnitsIn : isNextNearer;
    return {isShorter ? tens + Bits(isNextTensIn) : units + Bits(isNext), isShorter ? k + 1 : k};
}

} // namespace vor::detail
