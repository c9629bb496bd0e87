// Plain numbers of a list, many at a time, with the widest instructions that the processor has.
#pragma once

#include "scene/core/InstructionSet.h"
#include "scene/core/Types.h"

#include <cstddef>

namespace vor::velmo_sdk::impl {

// The numbers that buffers are made of.
#define VRN_BUFFER_NUMBERS(DO) DO(i8) DO(u8) DO(i16) DO(u16) DO(i32) DO(u32) DO(i64) DO(u64) DO(float) DO(double)

// How far a reader of blocks came.
struct BlockProgress {
    const char* at;      // behind the numbers that it read; never in the middle of one
    std::size_t numbers; // how many
};

// Reads numbers of a list from `at`, where none may be half-way, into `out` (unaligned), as long as they
// are plain: digits, with a minus sign before them and for reals one point among them. `end` is where the
// list's text ends, `room` how many numbers fit. Everything that is no number character separates; the
// characters must be known to be ones that a list may hold. It stops before what is not plain, does not
// fit the type, takes more digits than it can round, or is too near to either end, for someone else to go
// on from there. The blockMargin characters before `at` must be readable. Behind the numbers that it counts it may have
// overwritten up to mostNumbers of `out`.
inline constexpr std::size_t blockMargin = 16;
using BlockReader = BlockProgress (*)(const char* at, const char* end, std::byte* out, std::size_t room);

// The reader for a type of number with a set of instructions that the processor has; null for Baseline,
// where one number at a time is as quick. The numbers are those that buffers have.
template <class Number> [[nodiscard]] BlockReader blockReader(InstructionSet set) noexcept;

} // namespace vor::velmo_sdk::impl
