// Reads blocks of 64 characters by the same masks as PlainBlocksAvx512.cpp, whose worked example applies up to
// `wholes`. AVX2 has no byte compression, so four numbers at a time take their bits off the masks and are loaded one by
// one, each with its last digit at the end of a lane; a shuffle from a table removes the point. The multiply-adds are
// the same.
#include "impl/numbers/PlainBlocksAvx2.h"

#if defined(__x86_64__)

#    include "impl/numbers/BlockMasks.h"
#    include "impl/numbers/NumberShuffles.h"
#    include "scene/core/DecimalArithmetic.h"
#    include "scene/core/PlainNumber.h"

#    include <cstring>
#    include <immintrin.h>
#    include <limits>
#    include <type_traits>

#    define VRN_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))

namespace vor::velmo_sdk::impl {

namespace {

using vor::detail::joinDigits;
using vor::detail::joinPairs;
using vor::detail::joinQuadruples;
using vor::detail::tenToThe8;

VRN_AVX2 inline u64 bits(__m256i low, __m256i high) {
    return static_cast<u32>(_mm256_movemask_epi8(low)) | u64(static_cast<u32>(_mm256_movemask_epi8(high))) << 32;
}

VRN_AVX2 inline __m256i isNumber(__m256i text) {
    const __m256i low = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(nibbles.low)));
    const __m256i high = _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(nibbles.high)));
    const __m256i row = _mm256_and_si256(_mm256_srli_epi16(text, 4), _mm256_set1_epi8(15));
    const __m256i shared = _mm256_and_si256(_mm256_shuffle_epi8(low, text), _mm256_shuffle_epi8(high, row));
    return _mm256_cmpgt_epi8(shared, _mm256_setzero_si256());
}

VRN_AVX2 inline __m256i isDigit(__m256i text) {
    const __m256i value = _mm256_sub_epi8(text, _mm256_set1_epi8('0'));
    return _mm256_cmpeq_epi8(_mm256_min_epu8(value, _mm256_set1_epi8(9)), value);
}

VRN_AVX2 inline u64 bitsOf(__m256i low, __m256i high, char c) {
    const __m256i all = _mm256_set1_epi8(c);
    return bits(_mm256_cmpeq_epi8(low, all), _mm256_cmpeq_epi8(high, all));
}

template <bool isReal> VRN_AVX2 inline BlockContent find(const char* at, BlockNumbers& numbers, bool& isShort) {
    const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
    const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + 32));
    const BlockMasks is{bits(isNumber(low), isNumber(high)), bits(isDigit(low), isDigit(high)), bitsOf(low, high, '-'),
                        isReal ? bitsOf(low, high, '.') : 0};
    const BlockContent found = findNumbers<isReal>(is, numbers);
    return found == BlockContent::Numbers ? dropUnfinished(is.number, numbers, isShort) : found;
}

// After the last number, returns empty ones at 64.
VRN_AVX2 inline NumberExtent popNumber(BlockNumbers& numbers) {
    const auto start = static_cast<std::size_t>(_tzcnt_u64(numbers.starts));
    const auto whole = static_cast<std::size_t>(_tzcnt_u64(numbers.wholes));
    const auto end = static_cast<std::size_t>(_tzcnt_u64(numbers.ends));
    const u64 isNegative = _bextr_u64(numbers.signs, static_cast<u32>(start), 1);
    numbers.starts = _blsr_u64(numbers.starts);
    numbers.wholes = _blsr_u64(numbers.wholes);
    numbers.ends = _blsr_u64(numbers.ends);
    return {start + isNegative, whole, end, isNegative};
}

VRN_AVX2 inline __m256i joinFours(__m256i digits) {
    const __m256i pairs = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(joinDigits));
    return _mm256_madd_epi16(pairs, _mm256_set1_epi32(joinPairs));
}

VRN_AVX2 inline __m256i joinHalves(__m256i halves, i64 factor) {
    return _mm256_add_epi64(_mm256_mul_epu32(halves, _mm256_set1_epi64x(factor)), _mm256_srli_epi64(halves, 32));
}

// The values of up to eight digits as the bytes of a word, the last digit in the highest byte.
VRN_AVX2 inline i64 eightDigits(const char* at, const NumberExtent& number) {
    u64 word;
    std::memcpy(&word, at + number.end - 8, sizeof word);
    word ^= vor::detail::eightZeros;
    return static_cast<i64>(word ^ _bzhi_u64(word, static_cast<u32>(64 - 8 * (number.length()))));
}

VRN_AVX2 inline __m256i shortIntegers(const char* at, const NumberExtent (&numbers)[4]) {
    const __m128i low = _mm_set_epi64x(eightDigits(at, numbers[1]), eightDigits(at, numbers[0]));
    const __m128i high = _mm_set_epi64x(eightDigits(at, numbers[3]), eightDigits(at, numbers[2]));
    return joinHalves(joinFours(_mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1)), 10000);
}

VRN_AVX2 inline __m128i sixteen(const char* at, const NumberExtent& number) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + number.end - 16));
}

VRN_AVX2 inline __m128i shuffle(const NumberExtent& number) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(shuffleOf(number)));
}

// The digits of two numbers, right-aligned in 16 bytes each.
VRN_AVX2 inline __m256i sixteenDigits(const char* at, const NumberExtent& a, const NumberExtent& b) {
    const __m256i text = _mm256_inserti128_si256(_mm256_castsi128_si256(sixteen(at, a)), sixteen(at, b), 1);
    const __m256i from = _mm256_inserti128_si256(_mm256_castsi128_si256(shuffle(a)), shuffle(b), 1);
    return _mm256_shuffle_epi8(_mm256_xor_si256(text, _mm256_set1_epi8('0')), from);
}

VRN_AVX2 inline __m256i longIntegers(const char* at, const NumberExtent (&numbers)[4]) {
    const __m256i even = joinFours(sixteenDigits(at, numbers[0], numbers[2]));
    const __m256i odd = joinFours(sixteenDigits(at, numbers[1], numbers[3]));
    const __m256i eights = _mm256_madd_epi16(_mm256_packus_epi32(even, odd), _mm256_set1_epi32(joinQuadruples));
    return joinHalves(eights, tenToThe8);
}

// All ones in the lanes of negative numbers.
VRN_AVX2 inline __m256i negativeLanes(const NumberExtent (&numbers)[4]) {
    const __m256i isNegative =
        _mm256_setr_epi64x(static_cast<i64>(numbers[0].isNegative), static_cast<i64>(numbers[1].isNegative),
                           static_cast<i64>(numbers[2].isNegative), static_cast<i64>(numbers[3].isNegative));
    return _mm256_sub_epi64(_mm256_setzero_si256(), isNegative);
}

template <class Number> VRN_AVX2 inline void store(std::byte* out, __m256i integers) {
    if constexpr (sizeof(Number) == 8)
        return _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), integers);
    const __m256i words = _mm256_permutevar8x32_epi32(integers, _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6));
    __m128i narrow = _mm256_castsi256_si128(words);
    if constexpr (sizeof(Number) == 4)
        return _mm_storeu_si128(reinterpret_cast<__m128i*>(out), narrow);
    constexpr char n = -1;
    if constexpr (sizeof(Number) == 2)
        narrow = _mm_shuffle_epi8(narrow, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, n, n, n, n, n, n, n, n));
    else
        narrow = _mm_shuffle_epi8(narrow, _mm_setr_epi8(0, 4, 8, 12, n, n, n, n, n, n, n, n, n, n, n, n));
    const i64 all = _mm_cvtsi128_si64(narrow);
    std::memcpy(out, &all, 4 * sizeof(Number) <= sizeof all ? 4 * sizeof(Number) : sizeof all);
}

// Stores four integers with their signs; false if one does not fit the type.
template <class Number>
VRN_AVX2 inline bool finish(__m256i integers, const NumberExtent (&numbers)[4], std::byte* out) {
    constexpr u64 largest = std::numeric_limits<Number>::max();
    // Integers have at most 16 digits here, so that wider types need no check.
    if constexpr (largest < u64(tenToThe8 * tenToThe8))
        if (!_mm256_testz_si256(_mm256_cmpgt_epi64(integers, _mm256_set1_epi64x(static_cast<i64>(largest))),
                                _mm256_set1_epi8(-1)))
            return false;
    const __m256i negative = negativeLanes(numbers);
    if constexpr (std::is_signed_v<Number>)
        integers = _mm256_sub_epi64(_mm256_xor_si256(integers, negative), negative);
    else if (!_mm256_testz_si256(negative, negative))
        return false;
    store<Number>(out, integers);
    return true;
}

// Unsigned integers below 2^53 as doubles. Or-ing 32 bits into the mantissa of 2^52, whose lowest bit is worth 1, gives
// 2^52 + low; in that of 2^84, whose lowest bit is worth 2^32, it gives 2^84 + high * 2^32. Then subtract both
// constants.
VRN_AVX2 inline __m256d toDoubles(__m256i integers) {
    const __m256i high = _mm256_or_si256(_mm256_srli_epi64(integers, 32), _mm256_castpd_si256(_mm256_set1_pd(0x1p84)));
    const __m256i low = _mm256_blend_epi32(_mm256_castpd_si256(_mm256_set1_pd(0x1p52)), integers, 0x55);
    return _mm256_add_pd(_mm256_sub_pd(_mm256_castsi256_pd(high), _mm256_set1_pd(0x1p84 + 0x1p52)),
                         _mm256_castsi256_pd(low));
}

// Stores four reals; false if one division does not round one of them correctly (Clinger 1990).
template <class Number>
requires std::is_floating_point_v<Number> VRN_AVX2 inline bool finish(__m256i digits, const NumberExtent (&numbers)[4],
                                                                      std::byte* out) {
    __m256i inexact = _mm256_cmpgt_epi64(digits, _mm256_set1_epi64x(vor::detail::maxExactInteger));
    const __m256d divisors =
        _mm256_setr_pd(divisorOf(numbers[0]), divisorOf(numbers[1]), divisorOf(numbers[2]), divisorOf(numbers[3]));
    __m256d values = _mm256_div_pd(toDoubles(digits), divisors);
    if constexpr (sizeof(Number) == sizeof(float)) {
        const __m256i tail =
            _mm256_and_si256(_mm256_castpd_si256(values), _mm256_set1_epi64x(vor::detail::floatTailMask));
        inexact = _mm256_or_si256(inexact, _mm256_cmpeq_epi64(tail, _mm256_set1_epi64x(vor::detail::floatTie)));
    }
    if (!_mm256_testz_si256(inexact, inexact))
        return false;
    const __m256i signs = _mm256_slli_epi64(negativeLanes(numbers), 63);
    values = _mm256_xor_pd(values, _mm256_castsi256_pd(signs));
    if constexpr (sizeof(Number) == sizeof(float))
        _mm_storeu_ps(reinterpret_cast<float*>(out), _mm256_cvtpd_ps(values));
    else
        _mm256_storeu_pd(reinterpret_cast<double*>(out), values);
    return true;
}

template <class Number> VRN_AVX2 inline bool convert(const char* at, BlockNumbers block, bool isShort, std::byte* out) {
    constexpr bool isReal = std::is_floating_point_v<Number>;
    for (; block.ends != 0; out += 4 * sizeof(Number)) {
        const NumberExtent numbers[] = {popNumber(block), popNumber(block), popNumber(block), popNumber(block)};
        const __m256i integers = !isReal && isShort ? shortIntegers(at, numbers) : longIntegers(at, numbers);
        if (!finish<Number>(integers, numbers, out))
            return false;
    }
    return true;
}

template <class Number>
VRN_AVX2 BlockProgress readBlocks(const char* at, const char* end, std::byte* out, std::size_t capacity) {
    std::size_t numbers = 0;
    while (static_cast<std::size_t>(end - at) >= blockSize && capacity - numbers >= maxBlockNumbers) {
        BlockNumbers block;
        bool isShort = false;
        const BlockContent found = find<std::is_floating_point_v<Number>>(at, block, isShort);
        if (found == BlockContent::Separators) {
            at += blockSize;
            continue;
        }
        if (found == BlockContent::Other || !convert<Number>(at, block, isShort, out + numbers * sizeof(Number)))
            break;
        at += block.length;
        numbers += static_cast<std::size_t>(std::popcount(block.ends));
    }
    return {at, numbers};
}

} // namespace

template <class Number> BlockReader blockReaderAvx2() noexcept { return readBlocks<Number>; }

#    define VRN_INSTANTIATE(Number) template BlockReader blockReaderAvx2<Number>() noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

#endif
