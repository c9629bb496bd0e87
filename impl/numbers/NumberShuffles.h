// What the block readers share that move each number to the end of sixteen bytes by a shuffle from a table, in which an
// index with its top bit set yields 0. Their loops are alike, too, but a function template that two instruction sets
// share cannot be inlined into the code for either.
#pragma once

#include "impl/numbers/BlockMasks.h"
#include "scene/core/PlainNumber.h"
#include "scene/core/Types.h"
#include "scene/syntax/CharClass.h"

#include <algorithm>
#include <bit>
#include <cstddef>

namespace vor::velmo_sdk::impl {

// Classifies characters of numbers by two nibble lookups: a character is one if the entries for its low and its high
// nibble share a bit. Each high nibble with such characters has a bit of its own, except that the upper and lower case
// letters of 4 and 6, and of 5 and 7, share one. The high nibbles of characters from 0x80 on have none.
struct alignas(16) NibbleTables {
    u8 low[16] = {};
    u8 high[16] = {};
    static constexpr u8 bitOfRow(int row) { return row == 2 ? 1 : row == 3 ? 2 : row == 4 || row == 6 ? 4 : 8; }
    constexpr NibbleTables() {
        for (int c = 0; c < 128; ++c)
            if (isIn(static_cast<char>(c), numberChar)) {
                low[c & 15] |= bitOfRow(c >> 4);
                high[c >> 4] |= bitOfRow(c >> 4);
            }
    }
    [[nodiscard]] constexpr bool isExact() const {
        for (int c = 0; c < 256; ++c)
            if (((low[c & 15] & high[c >> 4]) != 0) != isIn(static_cast<char>(c), numberChar))
                return false;
        return true;
    }
};
inline constexpr NibbleTables nibbles;
static_assert(nibbles.isExact());

// The bits at which a run of at least 9, or 17, characters of numbers starts; runs double in length with each step.
constexpr u64 runsOf9(u64 number) noexcept {
    u64 runs = number & (number >> 1);
    runs &= runs >> 2;
    runs &= runs >> 4;
    return runs & (number >> 8);
}
constexpr u64 runsOf17(u64 number) noexcept {
    u64 runs = number & (number >> 1);
    runs &= runs >> 2;
    runs &= runs >> 4;
    runs &= runs >> 8;
    return runs & (number >> 16);
}

// Drops the incomplete last number of a block, so that the masks run out together. Other: a number is too long for a
// vector. `isShort`: none has more than eight characters.
[[nodiscard, gnu::always_inline]] inline BlockContent dropUnfinished(u64 numberCharacters, BlockNumbers& numbers,
                                                                     bool& isShort) noexcept {
    const u64 inside = (u64(1) << numbers.length) - 1;
    isShort = (runsOf9(numberCharacters) & inside) == 0;
    if (!isShort && (runsOf17(numberCharacters) & inside) != 0)
        return BlockContent::Other;
    numbers.starts &= inside;
    numbers.signs &= inside;
    numbers.wholes &= inside | numbers.ends;
    return BlockContent::Numbers;
}

// A number taken off the masks: offsets into the block.
struct NumberExtent {
    std::size_t start; // after the sign
    std::size_t whole;
    std::size_t end;
    u64 isNegative;

    [[nodiscard]] std::size_t length() const noexcept { return end - start; }
    // The digits after the point. Without a point, end - whole - 1 is -1, which wraps to noPoint.
    static constexpr std::size_t noPoint = 31;
    [[nodiscard]] std::size_t places() const noexcept { return (end - whole - 1) & noPoint; }
};

// For each number of places, the divisor of a real whose digits were read without their point, and for each length as
// well, a shuffle of 16 bytes that end with the number: it moves the digits to the right end, drops the point and fills
// with zeros.
struct alignas(16) NumberTables {
    static constexpr u8 zeroByte = 1 << 7;
    double divisor[NumberExtent::noPoint + 1] = {};
    u8 shuffle[17][NumberExtent::noPoint + 1][16] = {};
    constexpr NumberTables() {
        for (std::size_t length = 0; length <= 16; ++length)
            for (std::size_t places = 0; places <= NumberExtent::noPoint; ++places) {
                std::size_t left = length; // characters not placed yet
                for (std::size_t i = 16; i-- > 0;) {
                    if (left > 0 && places != NumberExtent::noPoint && length - left == places)
                        --left;
                    shuffle[length][places][i] = left > 0 ? static_cast<u8>(16 - length + left - 1) : zeroByte;
                    left -= left > 0 ? 1 : 0;
                }
            }
        std::ranges::copy(vor::detail::exactPowersOfTen, divisor);
        divisor[NumberExtent::noPoint] = 1;
    }
};
inline constexpr NumberTables numberTables;

[[nodiscard, gnu::always_inline]] inline const u8* shuffleOf(const NumberExtent& number) noexcept {
    return numberTables.shuffle[number.length()][number.places()];
}
[[nodiscard, gnu::always_inline]] inline double divisorOf(const NumberExtent& number) noexcept {
    return numberTables.divisor[number.places()];
}

} // namespace vor::velmo_sdk::impl
