// Constants for dividing by powers of ten without a division instruction, computed and checked at compile time.
#pragma once

#include "scene/core/Types.h"

namespace vor::detail {

[[nodiscard]] consteval u64 tenToThe(unsigned exponent) {
    u64 power = 1;
    while (exponent-- != 0)
        power *= 10;
    return power;
}

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
