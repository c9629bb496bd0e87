// Finds the numbers in a block of 64 characters with bit operations on 64-bit masks, bit i for character i. Shared by
// all block readers; PlainBlocksAvx512.cpp shows a worked example.
#pragma once

#include "scene/core/Types.h"

#include <bit>
#include <cstddef>

namespace vor::velmo_sdk::impl {

inline constexpr std::size_t blockSize = 64;
inline constexpr std::size_t maxBlockNumbers = blockSize / 2; // one digit and one separator each

// The character classes of a block.
struct BlockMasks {
    u64 number; // any character of a number; all others are separators
    u64 digits;
    u64 minus;
    u64 points; // 0 for integers
};

enum class BlockContent { Numbers, Separators, Other };

// The numbers that end within the block, one bit in each mask for each of them. A number that continues past the block
// has a bit in `starts`, and in `wholes` if its point is inside.
struct BlockNumbers {
    u64 starts;         // first character, sign included
    u64 signs;          // the starts that are minus signs
    u64 wholes;         // one past the integer part: the point, or the end if there is none
    u64 ends;           // one past the last character
    std::size_t length; // characters up to the last end: where the next block begins
};

// Finds the numbers of a block that does not begin inside a number. Other: a number is not plain, or no number ends
// within the block. `isReal` allows points.
template <bool isReal>
[[nodiscard, gnu::always_inline]] inline BlockContent findNumbers(const BlockMasks& is, BlockNumbers& found) noexcept {
    const u64 ends = ~is.number & (is.number << 1);
    if (ends == 0)
        return is.number == 0 ? BlockContent::Separators : BlockContent::Other;
    const u64 starts = is.number & ~(is.number << 1);
    const u64 signs = is.minus & starts;
    const std::size_t length = blockSize - 1 - static_cast<std::size_t>(std::countl_zero(ends));
    const u64 inside = (u64(1) << length) - 1;

    // Adding a bit at the start of a run of ones carries to one past the run: to the first point or the end.
    const u64 beforePoint = is.number & ~is.points;
    const u64 wholes = isReal ? ((beforePoint + (starts & beforePoint)) & ~beforePoint) | (starts & is.points) : ends;
    // Plain: digits, a leading minus sign, and only the first point. `-`, `.` and `-.` have no digits.
    const u64 plain = is.digits | signs | (is.points & wholes);
    const u64 withoutDigits = (ends & (signs << 1)) | (is.points & (ends >> 1) & (starts | signs << 1));
    if (((is.number & ~plain) & inside) != 0 || withoutDigits != 0)
        return BlockContent::Other;
    found = {starts, signs, wholes, ends, length};
    return BlockContent::Numbers;
}

} // namespace vor::velmo_sdk::impl
