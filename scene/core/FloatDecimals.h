// The shortest decimals of sixteen floats, with vector instructions.
#pragma once

#include "scene/core/Types.h"

#include <cstddef>

namespace vor {

// digits / 10^places, one element for each float; of zeros, the digits are 0 and there is one place.
struct FloatDecimals {
    static constexpr std::size_t size = 16;
    alignas(32) u64 digits[size];
    alignas(32) u64 places[size];
};

// The same as detail::shortestDecimal() returns for each of FloatDecimals::size numbers without its sign. They must be
// in its fast range, or zero. The processor must have Vector128 or Avx2.
[[nodiscard]] FloatDecimals floatDecimals128(const float* numbers) noexcept;
[[nodiscard]] FloatDecimals floatDecimalsAvx2(const float* numbers) noexcept;

} // namespace vor
