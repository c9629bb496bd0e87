// Short names for fixed-width integers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vor {

using i8 = std::int8_t;
using i16 = std::int16_t;
using i32 = std::int32_t;
using i64 = std::int64_t;
using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

static_assert(sizeof(std::size_t) == 8, "buffers of more than 4 GiB need a 64-bit address space");

} // namespace vor
