#include "scene/core/FloatDecimals.h"

#include "scene/core/ShortestDecimal.h"
#include "scene/core/Vector128.h"

#if defined(VRN_HAS_VECTOR128)

#    define VRN_LANES_PART VRN_VECTOR128_PART

namespace vor {

namespace {

using Lanes = U64x2;

VRN_LANES_PART Lanes loadBits(const float* numbers) {
    u32 bits[2];
    std::memcpy(bits, numbers, sizeof bits);
    return Lanes{bits[0], bits[1]};
}

VRN_LANES_PART Lanes isGreater(Lanes a, Lanes b) { return isNegative(b - a); }

VRN_LANES_PART Lanes powerOfFive(Lanes exponents) {
    return Lanes{detail::powersOfFive[exponents[0]], detail::powersOfFive[exponents[1]]};
}

} // namespace

} // namespace vor

#    include "scene/core/FloatDecimalSteps.h"

namespace vor {

VRN_VECTOR128 FloatDecimals floatDecimals128(const float* numbers) noexcept { return floatDecimals(numbers); }

} // namespace vor

#endif
