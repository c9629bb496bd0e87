// Where the numbers of 64 characters stand, from masks that have a bit for each character.
#pragma once

#include "scene/core/Types.h"

#include <bit>
#include <cstddef>

namespace vor::velmo_sdk::impl {

inline constexpr std::size_t blockSize = 64;
inline constexpr std::size_t mostNumbers = blockSize / 2; // of one block

// What the characters are.
struct BlockMasks {
    u64 number; // number characters of any kind; the others separate
    u64 digits;
    u64 minus;
    u64 points; // only where they are allowed
};

enum class Found { Numbers, Separators, Other };

// The whole numbers of a block: a bit in each mask for each of them, and a bit of `starts` more for one
// that goes on behind the block.
struct BlockNumbers {
    u64 starts;         // the first character, which may be the sign
    u64 signs;          // the same where it is a minus sign
    u64 wholes;         // behind the digits of the whole part: the first point, or the end
    u64 ends;           // behind the last character
    std::size_t length; // of the block, up to the end of the last of them
};

// Finds the numbers; Other if one of them is not plain, or too long to see where it ends. The block begins
// with no number half-way. `isReal` says whether there may be points at all.
template <bool isReal>
[[nodiscard, gnu::always_inline]] inline Found findNumbers(const BlockMasks& is, BlockNumbers& found) noexcept {
    const u64 ends = ~is.number & (is.number << 1);
    if (ends == 0)
        return is.number == 0 ? Found::Separators : Found::Other;
    const u64 starts = is.number & ~(is.number << 1);
    const u64 signs = is.minus & starts;
    const std::size_t length = blockSize - 1 - static_cast<std::size_t>(std::countl_zero(ends));
    const u64 inside = (u64(1) << length) - 1;

    // A bit that is added at the start of a number runs up to its first point or its end.
    const u64 beforePoint = is.number & ~is.points;
    const u64 wholes = isReal ? ((beforePoint + (starts & beforePoint)) & ~beforePoint) | (starts & is.points) : ends;
    const u64 plain = is.digits | signs | (is.points & wholes);
    const u64 withoutDigits = (ends & (signs << 1)) | (is.points & (ends >> 1) & (starts | signs << 1));
    if (((is.number & ~plain) & inside) != 0 || withoutDigits != 0)
        return Found::Other;
    found = {starts, signs, wholes, ends, length};
    return Found::Numbers;
}

} // namespace vor::velmo_sdk::impl
