// Reads blocks of 64 characters by the same masks as PlainBlocksAvx512.cpp, whose worked example applies up to
// `wholes`, with the vectors of sixteen bytes that SSE4.1 and NEON have. Two numbers at a time take their bits off the
// masks and are loaded one by one, each with its last digit at the end of a vector; a shuffle from a table removes the
// point. The multiply-adds are the same.
#include "impl/numbers/PlainBlocks128.h"

#include "scene/core/Vector128.h"

#if defined(VRN_HAS_VECTOR128)

#    include "impl/numbers/BlockMasks.h"
#    include "impl/numbers/NumberShuffles.h"
#    include "scene/core/CharBlock.h"
#    include "scene/core/PlainNumber.h"

#    include <bit>
#    include <cstring>
#    include <limits>
#    include <type_traits>

namespace vor::velmo_sdk::impl {

namespace {

using vor::detail::tenToThe8;

constexpr std::size_t lanes = 2;

VRN_VECTOR128_PART CharBlock::Mask areOfNumbers(CharBlock text) {
    const U8x16 low = lookUp(loadBytes(nibbles.low), text.lanes() & 15);
    const U8x16 high = lookUp(loadBytes(nibbles.high), text.lanes() >> 4);
    return ~CharBlock::Mask(reinterpret_cast<U8x16>((low & high) == 0));
}

template <bool isReal> VRN_VECTOR128_PART BlockContent find(const char* at, BlockNumbers& numbers, bool& isShort) {
    const CharBlock text[] = {CharBlock::load(at), CharBlock::load(at + 16), CharBlock::load(at + 32),
                              CharBlock::load(at + 48)};
    const auto bits = [&text](auto matches) VRN_VECTOR128 {
        return CharBlock::Mask::join(matches(text[0]), matches(text[1]), matches(text[2]), matches(text[3]));
    };
    const BlockMasks is{bits([](CharBlock block) VRN_VECTOR128 { return areOfNumbers(block); }),
                        bits([](CharBlock block) { return block.between('0', '9'); }),
                        bits([](CharBlock block) { return block.is('-'); }),
                        isReal ? bits([](CharBlock block) { return block.is('.'); }) : 0};
    const BlockContent found = findNumbers<isReal>(is, numbers);
    return found == BlockContent::Numbers ? dropUnfinished(is.number, numbers, isShort) : found;
}

// After the last number, returns empty ones at the last character, whose bit is set because counting the zeros of 0
// would take a branch.
VRN_VECTOR128_PART NumberExtent popNumber(BlockNumbers& numbers) {
    const auto position = [](u64 bits) {
        return static_cast<std::size_t>(std::countr_zero(bits | u64(1) << (blockSize - 1)));
    };
    const std::size_t start = position(numbers.starts);
    const std::size_t whole = position(numbers.wholes);
    const std::size_t end = position(numbers.ends);
    const u64 isNegative = numbers.signs >> start & 1;
    numbers.starts &= numbers.starts - 1;
    numbers.wholes &= numbers.wholes - 1;
    numbers.ends &= numbers.ends - 1;
    return {start + isNegative, whole, end, isNegative};
}

// The values of up to eight digits as the bytes of a word, the last digit in the highest byte.
VRN_VECTOR128_PART i64 eightDigits(const char* at, const NumberExtent& number) {
    u64 word;
    std::memcpy(&word, at + number.end - 8, sizeof word);
    word ^= vor::detail::eightZeros;
    const std::size_t others = 64 - 8 * (number.length());
    return others == 64 ? 0 : static_cast<i64>(word >> others << others);
}

VRN_VECTOR128_PART I64x2 shortIntegers(const char* at, const NumberExtent (&numbers)[lanes]) {
    return valuesOfEight(reinterpret_cast<U8x16>(I64x2{eightDigits(at, numbers[0]), eightDigits(at, numbers[1])}));
}

// The digits of a number, right-aligned.
VRN_VECTOR128_PART U8x16 sixteenDigits(const char* at, const NumberExtent& number) {
    return lookUp(loadBytes(at + number.end - 16) ^ '0', loadBytes(shuffleOf(number)));
}

VRN_VECTOR128_PART I64x2 longIntegers(const char* at, const NumberExtent (&numbers)[lanes]) {
    return valuesOfSixteen(sixteenDigits(at, numbers[0]), sixteenDigits(at, numbers[1]));
}

// All ones in the lanes of negative numbers.
VRN_VECTOR128_PART I64x2 negativeLanes(const NumberExtent (&numbers)[lanes]) {
    return -I64x2{static_cast<i64>(numbers[0].isNegative), static_cast<i64>(numbers[1].isNegative)};
}

// Stores the integers with their signs; false if one does not fit the type.
template <class Number>
VRN_VECTOR128_PART bool finish(I64x2 integers, const NumberExtent (&numbers)[lanes], std::byte* out) {
    constexpr u64 largest = std::numeric_limits<Number>::max();
    // Integers have at most 16 digits here, so that wider types need no check.
    if constexpr (largest < u64(tenToThe8 * tenToThe8))
        if (isAnyNegative(static_cast<i64>(largest) - integers))
            return false;
    const I64x2 negative = negativeLanes(numbers);
    if (!std::is_signed_v<Number> && isAnyNegative(negative))
        return false;
    integers = (integers ^ negative) - negative;
    for (std::size_t i = 0; i < lanes; ++i) {
        const auto number = static_cast<Number>(integers[i]);
        std::memcpy(out + i * sizeof number, &number, sizeof number);
    }
    return true;
}

// Stores the reals; false if one division does not round one of them correctly (Clinger 1990).
template <class Number>
requires std::is_floating_point_v<Number> VRN_VECTOR128_PART bool
finish(I64x2 digits, const NumberExtent (&numbers)[lanes], std::byte* out) {
    F64x2 values = toDoubles(digits) / F64x2{divisorOf(numbers[0]), divisorOf(numbers[1])};
    I64x2 inexact = vor::detail::maxExactInteger - digits;
    if constexpr (sizeof(Number) == sizeof(float))
        inexact |= (reinterpret_cast<I64x2>(values) & vor::detail::floatTailMask) == vor::detail::floatTie;
    if (isAnyNegative(inexact))
        return false;
    values = reinterpret_cast<F64x2>(reinterpret_cast<I64x2>(values) ^ negativeLanes(numbers) << 63);
    if constexpr (sizeof(Number) == sizeof(float)) {
        const F32x2 floats = __builtin_convertvector(values, F32x2);
        std::memcpy(out, &floats, sizeof floats);
    } else {
        std::memcpy(out, &values, sizeof values);
    }
    return true;
}

template <class Number>
VRN_VECTOR128_PART bool convert(const char* at, BlockNumbers block, bool isShort, std::byte* out) {
    constexpr bool isReal = std::is_floating_point_v<Number>;
    for (; block.ends != 0; out += lanes * sizeof(Number)) {
        const NumberExtent numbers[] = {popNumber(block), popNumber(block)};
        const I64x2 integers = !isReal && isShort ? shortIntegers(at, numbers) : longIntegers(at, numbers);
        if (!finish<Number>(integers, numbers, out))
            return false;
    }
    return true;
}

template <class Number>
VRN_VECTOR128 BlockProgress readBlocks(const char* at, const char* end, std::byte* out, std::size_t capacity) {
    std::size_t numbers = 0;
    while (static_cast<std::size_t>(end - at) >= blockSize && capacity - numbers >= maxBlockNumbers) {
        BlockNumbers block;
        bool isShort = false;
        const BlockContent found = find<std::is_floating_point_v<Number>>(at, block, isShort);
        if (found == BlockContent::Separators) {
            at += blockSize;
            continue;
        }
        if (found == BlockContent::Other || !convert<Number>(at, block, isShort, out + numbers * sizeof(Number)))
            break;
        at += block.length;
        numbers += static_cast<std::size_t>(std::popcount(block.ends));
    }
    return {at, numbers};
}

} // namespace

template <class Number> BlockReader blockReader128() noexcept { return readBlocks<Number>; }

#    define VRN_INSTANTIATE(Number) template BlockReader blockReader128<Number>() noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

#endif
