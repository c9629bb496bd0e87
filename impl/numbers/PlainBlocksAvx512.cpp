// Reads blocks of 64 characters, each starting outside a number. Bit masks give the start, point and end of every
// number; byte permutations right-align the digits of eight numbers in lanes of equal size; multiply-adds turn each
// lane into an integer. No step depends on the length of a number. The next block starts after the last complete
// number.
//
// Worked example, a block of a list of floats. Column i is character i of the block, and bit i of a mask:
//
//   text     -1.5 20.25 7 -.125 3.14159 100 42 -0.5 6.02 -9 8.75 1000 64 12.6
//   number   ^^^^ ^^^^^ ^ ^^^^^ ^^^^^^^ ^^^ ^^ ^^^^ ^^^^ ^^ ^^^^ ^^^^ ^^ ^^^^
//   digits    ^ ^ ^^ ^^ ^   ^^^ ^ ^^^^^ ^^^ ^^  ^ ^ ^ ^^  ^ ^ ^^ ^^^^ ^^ ^^ ^
//   points     ^    ^      ^     ^               ^   ^       ^             ^
//   starts   ^    ^     ^ ^     ^       ^   ^  ^    ^    ^  ^    ^    ^  ^      number & ~(number << 1)
//   signs    ^            ^                    ^         ^                      minus & starts
//   ends         ^     ^ ^     ^       ^   ^  ^    ^    ^  ^    ^    ^  ^       ~number & (number << 1)
//   wholes     ^    ^    ^ ^     ^         ^  ^  ^   ^     ^ ^       ^  ^  ^
//
// The last `ends` bit is 59, so the next block begins there and reads 12.6... again as a whole. Compressing the bit
// positions by each mask gives one byte for each of the 13 numbers; `negative` is `signs` compressed by `starts`.
// `wholes` are the points, or ends, that the `starts` carry to when added to number & ~points:
//
//   startAt  0 5 11 13 19 27 31 34 39 44 47 52 57
//   wholeAt  2 7 12 14 20 30 33 36 40 46 48 56 59
//   endAt    4 10 12 18 26 30 33 38 43 46 51 56 59
//   places   1 2 0 3 5 0 0 1 2 0 2 0 0              endAt - (wholeAt + 1), saturating at 0
//   negative 1 0 0 1 0 0 0 1 0 1 0 0 0
//
// Compressing the characters by ~points, and `ends` likewise, closes the gaps (`_` is a byte of value 0):
//
//   digits   _15_2025_7__125_314159_100_42__05_602__9_875_1000_64_126
//   ends     3 8 10 15 22 26 29 33 37 40 44 49 52
//
// sixteenDigits() then moves the bytes before each end to the right end of a 16-byte lane; bytes up to the end
// of the previous number are masked to 0. 3.14159 ends at 22; the next steps join neighbours:
//
//   bytes    0 0 0 0 0 0 0 0 0 0 3 1 4 1 5 9
//   * 10     0   0   0   0   0   31  41  59     maddubs, 16-bit lanes
//   * 100    0       0       31      4159       madd, 32-bit lanes
//   * 10^4   0               314159             packed to 16 bits, madd
//   * 10^8   314159                             multiply and add
//
// Finally 314159 / 10^5 = 3.14159, one correctly rounded division; the sign is applied with an exclusive or.
#include "impl/numbers/PlainBlocksAvx512.h"

#if defined(__x86_64__)

#    include "impl/numbers/BlockMasks.h"
#    include "scene/core/Avx512.h"
#    include "scene/core/DecimalArithmetic.h"
#    include "scene/core/PlainNumber.h"
#    include "scene/syntax/CharClass.h"

#    include <bit>
#    include <cstring>
#    include <limits>
#    include <type_traits>

namespace vor::velmo_sdk::impl {

namespace {

using vor::detail::joinDigits;
using vor::detail::joinPairs;
using vor::detail::joinQuadruples;
using vor::detail::tenToThe8;

// Indexed by an ASCII character: the top bit, which movepi8_mask collects, is set for characters of numbers.
struct alignas(64) NumberTable {
    u8 entry[128] = {};
    constexpr NumberTable() {
        for (int c = 0; c < 128; ++c)
            entry[c] = isIn(static_cast<char>(c), numberChar) ? 1 << 7 : 0;
    }
};
constexpr NumberTable numberTable;

// For byte i of a register with 8-byte or 16-byte lanes: its distance to the end of its lane, and its lane.
constexpr ByteTable byteOf8([](int i) { return i % 8 - 8; });
constexpr ByteTable byteOf16([](int i) { return i % 16 - 16; });
constexpr ByteTable numberOf8([](int i) { return i / 8; });
constexpr ByteTable numberOf16([](int i) { return i / 16; });

// The numbers that end within one block.
struct Block {
    __m512i digits; // the characters without points: values of digits, 0 for all others
    __m512i ends;   // one byte per number: its end in `digits`; byte 63 is -1, the end before the first number
    __m512i places; // one byte per number: digits after the point
    u64 negative;   // one bit per number
    std::size_t count;
    std::size_t length; // characters up to the end of the last number
    bool isShort;       // no number has more than 8 digits
    bool isLongest;     // a number has more than 16 digits
};

VRN_AVX512 inline bool anyAbove(__m512i bytes, u64 which, char limit) {
    return (_mm512_cmpgt_epu8_mask(bytes, _mm512_set1_epi8(limit)) & which) != 0;
}

// Finds the numbers that end among the next 64 characters.
template <bool isReal> VRN_AVX512 inline BlockContent find(const char* at, Block& block) {
    const __m512i text = _mm512_loadu_si512(at);
    const __m512i classes = _mm512_permutex2var_epi8(_mm512_load_si512(numberTable.entry), text,
                                                     _mm512_load_si512(numberTable.entry + blockSize));
    const __m512i values = _mm512_sub_epi8(text, _mm512_set1_epi8('0'));
    const BlockMasks is{_mm512_movepi8_mask(classes) & ~_mm512_movepi8_mask(text),
                        _mm512_cmple_epu8_mask(values, _mm512_set1_epi8(9)),
                        _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('-')),
                        isReal ? _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('.')) : 0};
    BlockNumbers numbers;
    if (const BlockContent found = findNumbers<isReal>(is, numbers); found != BlockContent::Numbers)
        return found;

    block.length = numbers.length;
    block.count = static_cast<std::size_t>(std::popcount(numbers.ends));
    block.negative = _pext_u64(numbers.signs, numbers.starts);
    const __m512i where = load(bytePositions);
    const __m512i wholeAt = _mm512_maskz_compress_epi8(numbers.wholes, where);
    const __m512i endAt = isReal ? _mm512_maskz_compress_epi8(numbers.ends, where) : wholeAt;
    const __m512i startAt = _mm512_maskz_compress_epi8(numbers.starts, where);
    block.places = _mm512_subs_epu8(endAt, _mm512_add_epi8(wholeAt, _mm512_set1_epi8(1)));
    __m512i lengths = _mm512_add_epi8(_mm512_sub_epi8(wholeAt, startAt), block.places);
    lengths = _mm512_mask_sub_epi8(lengths, block.negative, lengths, _mm512_set1_epi8(1));
    const u64 all = (u64(1) << block.count) - 1;
    if (anyAbove(lengths, all, vor::detail::maxDigits))
        return BlockContent::Other;
    block.isShort = !anyAbove(lengths, all, 8);
    block.isLongest = anyAbove(lengths, all, 16);

    block.digits = _mm512_maskz_mov_epi8(is.digits, values);
    block.ends = endAt;
    if constexpr (isReal) {
        block.digits = _mm512_maskz_compress_epi8(~is.points, block.digits);
        block.ends = _mm512_maskz_compress_epi8(_pext_u64(numbers.ends, ~is.points), where);
    }
    // rightAligned() looks up the end before number 0 at index -1, which wraps to byte 63.
    block.ends = _mm512_mask_mov_epi8(block.ends, u64(1) << 63, _mm512_set1_epi8(-1));
    return BlockContent::Numbers;
}

// The digits of some numbers, each right-aligned in its lane. For each byte of the result, `which` is the number it
// belongs to and `offset` its (negative) distance to the end of that number.
VRN_AVX512 inline __m512i rightAligned(const Block& block, __m512i which, __m512i offset) {
    const __m512i from = _mm512_add_epi8(_mm512_permutexvar_epi8(which, block.ends), offset);
    const __m512i previous = _mm512_permutexvar_epi8(_mm512_sub_epi8(which, _mm512_set1_epi8(1)), block.ends);
    return _mm512_maskz_permutexvar_epi8(_mm512_cmpgt_epi8_mask(from, previous), from, block.digits);
}

// Four digits of each 32-bit lane as an integer.
VRN_AVX512 inline __m512i joinFours(__m512i digits) {
    const __m512i pairs = _mm512_maddubs_epi16(digits, _mm512_set1_epi16(joinDigits));
    return _mm512_madd_epi16(pairs, _mm512_set1_epi32(joinPairs));
}

// For each 64-bit lane, low half * factor + high half.
VRN_AVX512 inline __m512i joinHalves(__m512i halves, i64 factor) {
    return _mm512_add_epi64(_mm512_mul_epu32(halves, _mm512_set1_epi64(factor)), _mm512_srli_epi64(halves, 32));
}

// The magnitudes of the numbers first to first + 7, points ignored.
VRN_AVX512 inline __m512i shortIntegers(const Block& block, std::size_t first) {
    const __m512i which = _mm512_add_epi8(load(numberOf8), _mm512_set1_epi8(static_cast<char>(first)));
    return joinHalves(joinFours(rightAligned(block, which, load(byteOf8))), 10000);
}

// The same for up to sixteen digits each, `offset` bytes before the ends. Four numbers fill a register.
VRN_AVX512 inline __m512i sixteenDigits(const Block& block, std::size_t first, __m512i offset) {
    const __m512i which = _mm512_add_epi8(load(numberOf16), _mm512_set1_epi8(static_cast<char>(first)));
    const __m512i four = joinFours(rightAligned(block, which, offset));
    __m512i others = _mm512_setzero_si512();
    if (block.count - first > 4)
        others = joinFours(rightAligned(block, _mm512_add_epi8(which, _mm512_set1_epi8(4)), offset));
    const __m512i eights = _mm512_madd_epi16(_mm512_packus_epi32(four, others), _mm512_set1_epi32(joinQuadruples));
    // packus works in 128-bit lanes, so numbers 0 to 3 are the even lanes of `eights` and 4 to 7 the odd ones.
    const __m512i inOrder = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), eights);
    return joinHalves(inOrder, tenToThe8);
}
VRN_AVX512 inline __m512i longIntegers(const Block& block, std::size_t first) {
    const __m512i last = sixteenDigits(block, first, load(byteOf16));
    if (!block.isLongest)
        return last;
    const __m512i others = sixteenDigits(block, first, _mm512_sub_epi8(load(byteOf16), _mm512_set1_epi8(16)));
    return _mm512_add_epi64(last, _mm512_mullo_epi64(others, _mm512_set1_epi64(tenToThe8 * tenToThe8)));
}

template <class Number> VRN_AVX512 inline void store(std::byte* out, __m512i integers) {
    if constexpr (sizeof(Number) == 8)
        _mm512_storeu_si512(out, integers);
    else if constexpr (sizeof(Number) == 4)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_cvtepi64_epi32(integers));
    else if constexpr (sizeof(Number) == 2)
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm512_cvtepi64_epi16(integers));
    else
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm512_cvtepi64_epi8(integers));
}

// Reals that one division does not round correctly. They are collected and rounded in batches, because a call out of
// the reader saves and restores all vector registers. A block adds at limit maxBlockNumbers, and stores eight lanes at
// a time.
struct LongNumbers {
    static constexpr std::size_t capacity = 256;
    u64 digits[capacity + 8];
    u64 places[capacity + 8];
    u64 index[capacity + 8]; // into the output
    u64 isNegative[capacity + 8];
    std::size_t count = 0;
};

// Stores eight integers with their signs; false if one does not fit the type.
template <class Number>
VRN_AVX512 inline bool finish(__m512i integers, __m512i, __mmask8 negative, std::byte* out, LongNumbers&, std::size_t) {
    constexpr u64 largest = std::numeric_limits<Number>::max();
    if (_mm512_cmpgt_epu64_mask(integers, _mm512_set1_epi64(static_cast<i64>(largest))) != 0)
        return false;
    if constexpr (std::is_signed_v<Number>)
        integers = _mm512_mask_sub_epi64(integers, negative, _mm512_setzero_si512(), integers);
    else if (negative != 0)
        return false;
    store<Number>(out, integers);
    return true;
}

VRN_AVX512 inline void collect(LongNumbers& numbers, __mmask8 which, __m512i digits, __m512i places, __mmask8 negative,
                               std::size_t index) {
    const __m512i lanes = _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 6, 7);
    const __m512i indexes = _mm512_add_epi64(lanes, _mm512_set1_epi64(static_cast<i64>(index)));
    const __m512i signs = _mm512_maskz_set1_epi64(negative, 1);
    _mm512_storeu_si512(numbers.digits + numbers.count, _mm512_maskz_compress_epi64(which, digits));
    _mm512_storeu_si512(numbers.places + numbers.count, _mm512_maskz_compress_epi64(which, places));
    _mm512_storeu_si512(numbers.index + numbers.count, _mm512_maskz_compress_epi64(which, indexes));
    _mm512_storeu_si512(numbers.isNegative + numbers.count, _mm512_maskz_compress_epi64(which, signs));
    numbers.count += static_cast<std::size_t>(std::popcount(static_cast<u32>(which)));
}

// Rounds and stores the collected numbers.
template <class Number> [[gnu::noinline]] void roundAll(LongNumbers& numbers, std::byte* out) noexcept {
    for (std::size_t i = 0; i < numbers.count; ++i) {
        const auto magnitude =
            vor::detail::roundDecimal<Number>(numbers.digits[i], static_cast<u32>(numbers.places[i]));
        const Number number = numbers.isNegative[i] != 0 ? -magnitude : magnitude;
        std::memcpy(out + numbers.index[i] * sizeof number, &number, sizeof number);
    }
    numbers.count = 0;
}

template <class Number> void flush(LongNumbers& numbers, std::byte* out) noexcept {
    if constexpr (std::is_floating_point_v<Number>)
        if (numbers.count != 0)
            roundAll<Number>(numbers, out);
}

// Stores eight reals. digits / 10^places is exact up to the rounding of the one division (Clinger 1990) if both
// operands are doubles; all others are left to roundAll().
template <class Number>
requires std::is_floating_point_v<Number> VRN_AVX512 inline bool
finish(__m512i digits, __m512i places, __mmask8 negative, std::byte* out, LongNumbers& longNumbers, std::size_t index) {
    constexpr i64 maxTableExponent = 15; // the two registers hold 10^0 to 10^15
    const __m512d low = _mm512_setr_pd(1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7);
    const __m512d high = _mm512_setr_pd(1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15);
    const __m512i exponents = _mm512_cvtepu8_epi64(_mm512_castsi512_si128(places));
    __m512d values = _mm512_div_pd(_mm512_cvtepu64_pd(digits), _mm512_permutex2var_pd(low, exponents, high));
    u32 inexact = _mm512_cmpgt_epu64_mask(digits, _mm512_set1_epi64(vor::detail::maxExactInteger)) |
                  _mm512_cmpgt_epu64_mask(exponents, _mm512_set1_epi64(maxTableExponent));
    if constexpr (sizeof(Number) == sizeof(float)) {
        const __m512i tail =
            _mm512_and_si512(_mm512_castpd_si512(values), _mm512_set1_epi64(vor::detail::floatTailMask));
        inexact |= _mm512_cmpeq_epi64_mask(tail, _mm512_set1_epi64(vor::detail::floatTie));
    }
    values = _mm512_mask_xor_pd(values, negative, values, _mm512_set1_pd(-0.0));
    if constexpr (sizeof(Number) == sizeof(float))
        _mm256_storeu_ps(reinterpret_cast<float*>(out), _mm512_cvtpd_ps(values));
    else
        _mm512_storeu_pd(out, values);
    if (inexact != 0)
        collect(longNumbers, static_cast<__mmask8>(inexact), digits, exponents, negative, index);
    return true;
}

template <class Number>
VRN_AVX512 inline bool convert(const Block& block, std::byte* out, LongNumbers& longNumbers, std::size_t index) {
    __m512i places = block.places;
    for (std::size_t first = 0; first < block.count; first += 8) {
        const bool isShort = !std::is_floating_point_v<Number> && block.isShort;
        const __m512i integers = isShort ? shortIntegers(block, first) : longIntegers(block, first);
        if (!finish<Number>(integers, places, static_cast<__mmask8>(block.negative >> first), out, longNumbers,
                            index + first))
            return false;
        places = _mm512_alignr_epi64(places, places, 1);
        out += 8 * sizeof(Number);
    }
    return true;
}

template <class Number>
VRN_AVX512 BlockProgress readBlocks(const char* at, const char* end, std::byte* out, std::size_t capacity) {
    std::size_t numbers = 0;
    LongNumbers longNumbers;
    while (static_cast<std::size_t>(end - at) >= blockSize && capacity - numbers >= maxBlockNumbers) {
        Block block;
        const BlockContent found = find<std::is_floating_point_v<Number>>(at, block);
        if (found == BlockContent::Separators) {
            at += blockSize;
            continue;
        }
        if (found == BlockContent::Other ||
            !convert<Number>(block, out + numbers * sizeof(Number), longNumbers, numbers))
            break;
        at += block.length;
        numbers += block.count;
        if (longNumbers.count > LongNumbers::capacity - maxBlockNumbers)
            flush<Number>(longNumbers, out);
    }
    flush<Number>(longNumbers, out);
    return {at, numbers};
}

} // namespace

template <class Number> BlockReader blockReaderAvx512() noexcept { return readBlocks<Number>; }

#    define VRN_INSTANTIATE(Number) template BlockReader blockReaderAvx512<Number>() noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

#endif
