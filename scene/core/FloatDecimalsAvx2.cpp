#include "scene/core/FloatDecimals.h"

#if defined(__x86_64__)

#    include "scene/core/Types.h"

#    include <immintrin.h>

#    define VRN_LANES_PART __attribute__((target("avx2"), always_inline)) inline

namespace vor {

namespace {

using Lanes = u64 __attribute__((vector_size(32)));
using SignedLanes = i64 __attribute__((vector_size(32)));

VRN_LANES_PART Lanes loadBits(const float* numbers) {
    const __m128i floats = _mm_loadu_si128(reinterpret_cast<const __m128i*>(numbers));
    return reinterpret_cast<Lanes>(_mm256_cvtepu32_epi64(floats));
}

VRN_LANES_PART Lanes multiply32(Lanes a, Lanes b) {
    return reinterpret_cast<Lanes>(_mm256_mul_epu32(reinterpret_cast<__m256i>(a), reinterpret_cast<__m256i>(b)));
}
VRN_LANES_PART Lanes multiply32(Lanes numbers, u64 factor) { return multiply32(numbers, Lanes{} + factor); }

VRN_LANES_PART Lanes shiftLeft(Lanes numbers, Lanes counts) { return numbers << counts; }
VRN_LANES_PART Lanes shiftRight(Lanes numbers, Lanes counts) { return numbers >> counts; }

VRN_LANES_PART Lanes isGreater(Lanes a, Lanes b) {
    return reinterpret_cast<Lanes>(reinterpret_cast<SignedLanes>(a) > reinterpret_cast<SignedLanes>(b));
}

VRN_LANES_PART Lanes powerOfFive(Lanes exponents) {
    const __m256i first = _mm256_setr_epi32(1, 5, 25, 125, 625, 3125, 15625, 78125);
    const __m256i others = _mm256_setr_epi32(390625, 1953125, 9765625, 48828125, 244140625, 1220703125, 0, 0);
    const auto which = reinterpret_cast<__m256i>(exponents);
    const auto isOther = reinterpret_cast<__m256i>(isGreater(exponents, Lanes{} + 7));
    const __m256i powers = _mm256_blendv_epi8(_mm256_permutevar8x32_epi32(first, which),
                                              _mm256_permutevar8x32_epi32(others, which), isOther);
    return reinterpret_cast<Lanes>(powers) & 0xFFFFFFFF; // the upper half of each lane has looked up 5^0
}

} // namespace

} // namespace vor

#    include "scene/core/FloatDecimalSteps.h"

namespace vor {

__attribute__((target("avx2"))) FloatDecimals floatDecimalsAvx2(const float* numbers) noexcept {
    return floatDecimals(numbers);
}

} // namespace vor

#endif
