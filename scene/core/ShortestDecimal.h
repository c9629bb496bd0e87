// The shortest decimal that reads back as a given real number, for the numbers that most scenes are made of.
//
// A real number stands for all numbers that round to it. Among the decimals there, the ones with the fewest digits
// are looked for, and of these the nearest; see Giulietti, "The Schubfach way to render doubles" (2020). Limited to
// numbers that may have a fraction (below 2^53 for double, 2^24 for float) and are not too small, all of the arithmetic
// is exact, as the powers of ten fit the words. There is no branch, so that one call may work on several numbers:
// on a word for one, or on a vector of words.
#pragma once

#include "scene/core/Types.h"

#include <array>
#include <bit>
#include <concepts>
#include <type_traits>

namespace vor::detail {

__extension__ using u128 = unsigned __int128;

// Eight words with one instruction, where the processor has it.
using Lanes = u64 __attribute__((vector_size(64)));

using SignedLanes = i64 __attribute__((vector_size(64)));
template <class Word> using Signed = std::conditional_t<std::is_same_v<Word, u64>, i64, SignedLanes>;

// For a vector, `condition` has all bits of a lane set, or none.
template <class Condition, class Word>
[[gnu::always_inline]] inline Word select(Condition condition, Word yes, Word no) noexcept {
    return condition ? yes : no;
}

// The same number in all lanes.
template <class Word> [[gnu::always_inline]] inline Word all(u64 number) noexcept { return Word{} + number; }

// floor(log10(2^q)), floor(log10(3/4 2^q)) and floor(log2(10^e)), for more exponents than there are.
template <class Int> constexpr Int log10OfPower(Int q) noexcept { return (q * 1262611) >> 22; }
template <class Int> constexpr Int log10OfThreeQuarters(Int q) noexcept { return (q * 1262611 - 524031) >> 22; }
template <class Int> constexpr Int log2OfPowerOfTen(Int e) noexcept { return (e * 1741647) >> 19; }

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

    template <class Word> [[gnu::always_inline]] static Word tenth(Word units) noexcept {
        return (units * 0xCCCCCCCD) >> 35; // exact below 2^32
    }
    static u64 power(i64 e) noexcept { return powers[static_cast<std::size_t>(e)]; }
    template <class Ints> [[gnu::always_inline]] static Lanes power(Ints e) noexcept {
        Lanes found;
        for (int i = 0; i < 8; ++i)
            found[i] = powers[static_cast<std::size_t>(e[i])];
        return found;
    }
    // power * factor / 2^64, with the last bit set if that is no whole number; the factor is below 2^32.
    template <class Word> [[gnu::always_inline]] static Word scale(Word power, Word factor) noexcept {
        const Word low = (power & 0xFFFFFFFF) * factor;
        const Word sum = (power >> 32) * factor + (low >> 32);
        const Word rest = (sum | low) & 0xFFFFFFFF;
        return (sum >> 32) | select(rest != 0, all<Word>(1), all<Word>(0));
    }
};
template <> struct RealForm<double> {
    using Bits = u64;
    static constexpr i32 mantissaBits = 52;
    static constexpr i32 bias = 1075;
    static constexpr u32 digits = 17;
    static constexpr std::array<u128, 28> powers = shiftedPowersOfTen<u128, 28>();

    static u64 tenth(u64 units) noexcept { return units / 10; }
    static u128 power(i64 e) noexcept { return powers[static_cast<std::size_t>(e)]; }
    static u64 scale(u128 power, u64 factor) noexcept {
        const u128 low = u128(static_cast<u64>(power)) * factor;
        const u128 sum = u128(static_cast<u64>(power >> 64)) * factor + static_cast<u64>(low >> 64);
        const u64 rest = static_cast<u64>(sum) | static_cast<u64>(low);
        return static_cast<u64>(sum >> 64) | (rest != 0 ? 1U : 0U);
    }
};

// digits * 10^exponent; the digits may end with zeros.
template <class Word> struct ShortestDecimal {
    Word digits;
    Signed<Word> exponent;
};

// Whether the arithmetic below holds for the number with these bits, the sign's taken away: from 2^-17 to the last that
// may have a fraction.
template <std::floating_point Real, class Word> [[gnu::always_inline]] inline auto isMiddling(Word bits) noexcept {
    using Form = RealForm<Real>;
    constexpr u64 least = u64(Form::bias - Form::mantissaBits - 17) << Form::mantissaBits;
    constexpr u64 end = u64(Form::bias + 1) << Form::mantissaBits;
    return bits - least < all<Word>(end - least);
}

template <std::floating_point Real, class Word>
[[gnu::always_inline]] inline ShortestDecimal<Word> shortestDecimal(Word bits) noexcept {
    using Form = RealForm<Real>;
    using Int = Signed<Word>;
    constexpr u64 hiddenBit = u64(1) << Form::mantissaBits;
    const Word one = all<Word>(1);
    const Word none = all<Word>(0);
    const Word fraction = bits & (hiddenBit - 1);
    const Word mantissa = fraction | hiddenBit;
    const Int q = std::bit_cast<Int>(bits >> Form::mantissaBits) - Form::bias;
    // Below a power of two the numbers stand twice as dense.
    const auto isLowerCloser = fraction == 0;
    const Int k = select(isLowerCloser, log10OfThreeQuarters(q), log10OfPower(q));
    const auto power = Form::power(-k);
    const Word shift = std::bit_cast<Word>(q + log2OfPowerOfTen(-k) + 1);

    // Four times the number and the ends of what rounds to it, in units of 10^k. Ends belong to it if it is even.
    const Word four = 4 * mantissa;
    const Word middle = Form::scale(power, four << shift);
    const Word odd = mantissa & 1;
    const Word lower = Form::scale(power, (four - 2 + select(isLowerCloser, one, none)) << shift) + odd;
    const Word upper = Form::scale(power, (four + 2) << shift) - odd;

    // With one digit less, if just one of the two neighbours belongs; the ends are less than ten units apart.
    const Word units = middle / 4;
    const Word tens = Form::tenth(units);
    const auto isTensIn = lower <= 40 * tens;
    const auto isNextTensIn = 40 * tens + 40 <= upper;
    const auto isShorter = isTensIn != isNextTensIn;
    // Else whichever belongs, or the nearer one, of two as near the even one.
    const auto isUnitsIn = lower <= 4 * units;
    const auto isNextUnitsIn = 4 * units + 4 <= upper;
    const Word half = 4 * units + 2;
    const auto isNextNearer = middle + (units & 1) > half;
    const Word nextTens = tens + select(isNextTensIn, one, none);
    const Word nextUnits =
        units + select(isUnitsIn != isNextUnitsIn, select(isNextUnitsIn, one, none), select(isNextNearer, one, none));
    return {select(isShorter, nextTens, nextUnits), select(isShorter, k + 1, k)};
}

} // namespace vor::detail
