// Reads the plain numbers of a list in blocks of 64 characters with vector instructions.
#pragma once

#include "scene/core/InstructionSet.h"
#include "scene/core/Types.h"

#include <cstddef>

namespace vor::velmo_sdk::impl {

// The element types of buffers.
#define VRN_BUFFER_NUMBERS(DO) DO(i8) DO(u8) DO(i16) DO(u16) DO(i32) DO(u32) DO(i64) DO(u64) DO(float) DO(double)

// How far a block reader got.
struct BlockProgress {
    const char* at;      // one past the last number read; never inside a number
    std::size_t numbers; // how many it stored
};

// Reads plain numbers (digits with an optional minus sign and, for reals, at most one point) from [at, end) into `out`,
// which need not be aligned and has capacity for `capacity` numbers. Every character that is not part of a number
// separates; the caller has checked that the list may contain it. `at` must not be inside a number, and blockMargin
// characters before it must be readable.
//
// Stops before a number that is not plain, does not fit the type or has too many digits, and when fewer than 64
// characters or maxBlockNumbers slots remain; the caller continues number by number. Up to maxBlockNumbers elements of
// `out` after the counted ones may have been overwritten.
inline constexpr std::size_t blockMargin = 16;
using BlockReader = BlockProgress (*)(const char* at, const char* end, std::byte* out, std::size_t capacity);

// The block reader for an element type and an instruction set, which the processor must have. Null for Baseline.
template <class Number> [[nodiscard]] BlockReader blockReader(InstructionSet set) noexcept;

} // namespace vor::velmo_sdk::impl
