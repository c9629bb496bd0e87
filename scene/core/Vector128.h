// Operations on sixteen bytes that SSE4.1 and NEON offer under different names. Arithmetic and comparisons are those of
// the vector types of GCC and Clang.
//
// Include this only in sources that are reached through instructionSet(). On x86-64, functions that use it have the
// attribute VRN_VECTOR128 or one of a larger instruction set.
#pragma once

#include "scene/core/DecimalArithmetic.h"
#include "scene/core/Types.h"

#include <cstring>

#if defined(__x86_64__)
#    define VRN_HAS_VECTOR128
#    define VRN_VECTOR128 __attribute__((target("sse4.1")))
#    include <smmintrin.h>
#elif defined(__aarch64__) && !defined(__AARCH64EB__)
#    define VRN_HAS_VECTOR128
#    define VRN_VECTOR128
#    include <arm_neon.h>
#endif

#if defined(VRN_HAS_VECTOR128)

#    define VRN_VECTOR128_PART VRN_VECTOR128 __attribute__((always_inline)) inline

namespace vor {

using U8x16 = u8 __attribute__((vector_size(16)));
using U16x8 = u16 __attribute__((vector_size(16)));
using U32x4 = u32 __attribute__((vector_size(16)));
using U64x2 = u64 __attribute__((vector_size(16)));
using I64x2 = i64 __attribute__((vector_size(16)));
using F32x2 = float __attribute__((vector_size(8)));
using F64x2 = double __attribute__((vector_size(16)));

VRN_VECTOR128_PART U8x16 loadBytes(const void* from) {
    U8x16 bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

// The bytes of `table` at these indexes; 0 for an index with its top bit set. Others must be below 16.
VRN_VECTOR128_PART U8x16 lookUp(U8x16 table, U8x16 indexes) {
#    if defined(__x86_64__)
    return reinterpret_cast<U8x16>(
        _mm_shuffle_epi8(reinterpret_cast<__m128i>(table), reinterpret_cast<__m128i>(indexes)));
#    else
    return vqtbl1q_u8(table, indexes);
#    endif
}

#    if defined(__x86_64__)
// Four digits of each 32-bit lane as an integer.
VRN_VECTOR128_PART __m128i joinFours(U8x16 digits) {
    const __m128i pairs = _mm_maddubs_epi16(reinterpret_cast<__m128i>(digits), _mm_set1_epi16(detail::joinDigits));
    return _mm_madd_epi16(pairs, _mm_set1_epi32(detail::joinPairs));
}

// For each 64-bit lane, lower half * factor + upper half.
VRN_VECTOR128_PART I64x2 joinHalves(__m128i halves, i64 factor) {
    return reinterpret_cast<I64x2>(
        _mm_add_epi64(_mm_mul_epu32(halves, _mm_set1_epi64x(factor)), _mm_srli_epi64(halves, 32)));
}
#    endif

// The values of two numbers of eight digits, which are the halves of `digits`, the first digit of each lowest.
VRN_VECTOR128_PART I64x2 valuesOfEight(U8x16 digits) {
#    if defined(__x86_64__)
    return joinHalves(joinFours(digits), 10000);
#    else
    const uint16x8_t pairs =
        vpaddlq_u8(vmulq_u8(digits, U8x16{10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1, 10, 1}));
    const uint32x4_t fours = vpaddlq_u16(vmulq_u16(pairs, uint16x8_t{100, 1, 100, 1, 100, 1, 100, 1}));
    return reinterpret_cast<I64x2>(vpaddlq_u32(vmulq_u32(fours, U32x4{10000, 1, 10000, 1})));
#    endif
}

// The values of two numbers of sixteen digits.
VRN_VECTOR128_PART I64x2 valuesOfSixteen(U8x16 first, U8x16 second) {
#    if defined(__x86_64__)
    const __m128i eights =
        _mm_madd_epi16(_mm_packus_epi32(joinFours(first), joinFours(second)), _mm_set1_epi32(detail::joinQuadruples));
    return joinHalves(eights, detail::tenToThe8);
#    else
    const auto a = reinterpret_cast<uint64x2_t>(valuesOfEight(first));
    const auto b = reinterpret_cast<uint64x2_t>(valuesOfEight(second));
    return reinterpret_cast<I64x2>(
        vmlal_u32(vzip2q_u64(a, b), vmovn_u64(vzip1q_u64(a, b)), vdup_n_u32(detail::tenToThe8)));
#    endif
}

// The products of the lower halves of the lanes.
VRN_VECTOR128_PART U64x2 multiply32(U64x2 a, U64x2 b) {
#    if defined(__x86_64__)
    return reinterpret_cast<U64x2>(_mm_mul_epu32(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#    else
    return vmull_u32(vmovn_u64(a), vmovn_u64(b));
#    endif
}
VRN_VECTOR128_PART U64x2 multiply32(U64x2 numbers, u64 factor) { return multiply32(numbers, U64x2{factor, factor}); }

// Each lane shifted by its own count, which is below 64.
VRN_VECTOR128_PART U64x2 shiftLeft(U64x2 numbers, U64x2 counts) {
#    if defined(__x86_64__)
    const auto both = reinterpret_cast<__m128i>(numbers);
    const auto first = reinterpret_cast<__m128i>(counts);
    const __m128i second = _mm_unpackhi_epi64(first, first);
    return reinterpret_cast<U64x2>(_mm_blend_epi16(_mm_sll_epi64(both, first), _mm_sll_epi64(both, second), 0xF0));
#    else
    return vshlq_u64(numbers, reinterpret_cast<int64x2_t>(counts));
#    endif
}
VRN_VECTOR128_PART U64x2 shiftRight(U64x2 numbers, U64x2 counts) {
#    if defined(__x86_64__)
    const auto both = reinterpret_cast<__m128i>(numbers);
    const auto first = reinterpret_cast<__m128i>(counts);
    const __m128i second = _mm_unpackhi_epi64(first, first);
    return reinterpret_cast<U64x2>(_mm_blend_epi16(_mm_srl_epi64(both, first), _mm_srl_epi64(both, second), 0xF0));
#    else
    return vshlq_u64(numbers, -reinterpret_cast<int64x2_t>(counts));
#    endif
}

// All ones in the lanes whose top bit is set.
VRN_VECTOR128_PART U64x2 isNegative(U64x2 numbers) {
#    if defined(__x86_64__)
    const __m128i halves = _mm_srai_epi32(reinterpret_cast<__m128i>(numbers), 31);
    return reinterpret_cast<U64x2>(_mm_shuffle_epi32(halves, _MM_SHUFFLE(3, 3, 1, 1)));
#    else
    return reinterpret_cast<I64x2>(numbers) < 0;
#    endif
}

// The upper halves of the products of each lane and a factor.
VRN_VECTOR128_PART U16x8 multiplyHigh(U16x8 numbers, u16 factor) {
#    if defined(__x86_64__)
    return reinterpret_cast<U16x8>(
        _mm_mulhi_epu16(reinterpret_cast<__m128i>(numbers), _mm_set1_epi16(static_cast<i16>(factor))));
#    else
    const uint16x8_t factors = vdupq_n_u16(factor);
    return vuzp2q_u16(vreinterpretq_u16_u32(vmull_u16(vget_low_u16(numbers), vget_low_u16(factors))),
                      vreinterpretq_u16_u32(vmull_high_u16(numbers, factors)));
#    endif
}

// Integers from 0 to 2^54 as doubles, rounded to nearest.
VRN_VECTOR128_PART F64x2 toDoubles(I64x2 integers) {
#    if defined(__x86_64__)
    // Or-ing 32 bits into the mantissa of 2^52, whose lowest bit is worth 1, gives 2^52 + low; in that of 2^84, whose
    // lowest bit is worth 2^32, it gives 2^84 + high * 2^32. Then subtract both constants.
    const F64x2 high = reinterpret_cast<F64x2>((reinterpret_cast<U64x2>(integers) >> 32) |
                                               reinterpret_cast<U64x2>(F64x2{0x1p84, 0x1p84}));
    const F64x2 low = reinterpret_cast<F64x2>((integers & 0xFFFFFFFF) | reinterpret_cast<I64x2>(F64x2{0x1p52, 0x1p52}));
    return (high - (0x1p84 + 0x1p52)) + low;
#    else
    return vcvtq_f64_s64(reinterpret_cast<int64x2_t>(integers));
#    endif
}

// Whether a lane is below zero. (Comparing lanes of 64 bits takes SSE4.2.)
template <class Lanes> VRN_VECTOR128_PART bool isAnyNegative(Lanes lanes) {
#    if defined(__x86_64__)
    return _mm_movemask_pd(reinterpret_cast<__m128d>(lanes)) != 0;
#    else
    const auto numbers = reinterpret_cast<I64x2>(lanes);
    return (numbers[0] | numbers[1]) < 0;
#    endif
}

} // namespace vor

#endif
