// Constants for converting between digits and integers without a division instruction, computed and checked at compile
// time.
#pragma once

#include "scene/core/Types.h"

namespace vor::detail {

[[nodiscard]] consteval u64 tenToThe(unsigned exponent) {
    u64 power = 1;
    while (exponent-- != 0)
        power *= 10;
    return power;
}

// Multipliers that join the digits of a number pairwise: each multiply-add instruction takes two neighbouring lanes,
// the first one more significant, and yields first * 10^n + second. Lanes are little endian, so the factor of the first
// lane is the low half of the constant.
inline constexpr i16 joinDigits = 1 << 8 | 10;         // maddubs: bytes to 16-bit lanes of 2 digits
inline constexpr i32 joinPairs = 1 << 16 | 100;        // madd: 16-bit lanes to 32-bit lanes of 4 digits
inline constexpr i32 joinQuadruples = 1 << 16 | 10000; // madd on packed 16-bit lanes: 32-bit lanes of 8 digits

inline constexpr i64 tenToThe8 = 100000000;

// The r with n * r >> shift == n / divisor for all n < limit. It is 2^shift / divisor rounded up, by less than
// error / divisor; the quotients stay exact as long as n * error < 2^shift. The caller has to see that n * r fits.
template <u64 divisor, unsigned shift, u64 limit> [[nodiscard]] consteval u64 reciprocal() {
    constexpr u64 power = u64(1) << shift;
    constexpr u64 rounded = (power + divisor - 1) / divisor;
    constexpr u64 error = rounded * divisor - power;
    static_assert(error == 0 || limit - 1 <= (power - 1) / error);
    return rounded;
}

} // namespace vor::detail
