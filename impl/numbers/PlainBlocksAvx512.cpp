// 64 characters are looked at together, from the start of a number on. Bit masks say where numbers begin and
// end; byte permutations bring eight of them, digits alone, into equal places, where three
// multiplications make them integers. No step depends on how long a number
// is. The next 64 characters begin behind the last number that was whole.
#include "impl/numbers/PlainBlocksAvx512.h"

#if defined(__x86_64__)

#    include "impl/lexer/CharClass.h"
#    include "impl/numbers/BlockMasks.h"
#    include "scene/core/Avx512.h"
#    include "scene/core/PlainNumber.h"

#    include <bit>
#    include <cstring>
#    include <limits>
#    include <type_traits>

namespace vor::velmo_sdk::impl {

namespace {

// 0x80 for number characters, for a lookup of all characters below 0x80.
struct alignas(64) NumberTable {
    u8 entry[128] = {};
    constexpr NumberTable() {
        for (int c = 0; c < 128; ++c)
            entry[c] = isIn(static_cast<char>(c), numberChar) ? 0x80 : 0;
    }
};
constexpr NumberTable numberTable;

// The token that lane i / (8 or 16) takes, and the place in the lane.
constexpr ByteTable byteOf8([](int i) { return i % 8 - 8; });
constexpr ByteTable byteOf16([](int i) { return i % 16 - 16; });
constexpr ByteTable numberOf8([](int i) { return i / 8; });
constexpr ByteTable numberOf16([](int i) { return i / 16; });

// The numbers of one block.
struct Block {
    __m512i digits; // their characters without points: values of digits, 0 for the others
    __m512i ends;   // a byte for each number: where it ends in `digits`; the last byte is -1
    __m512i places; // a byte for each: how many digits stand behind the point
    u64 negative;   // a bit for each
    std::size_t count;
    std::size_t length; // characters up to the end of the last one
    bool isShort;       // none has more than eight digits
    bool isLongest;     // one has more than sixteen
};

VRN_AVX512 inline bool anyAbove(__m512i bytes, u64 which, char most) {
    return (_mm512_cmpgt_epu8_mask(bytes, _mm512_set1_epi8(most)) & which) != 0;
}

// Finds the whole numbers among 64 characters.
template <bool isReal> VRN_AVX512 inline Found find(const char* at, Block& block) {
    const __m512i text = _mm512_loadu_si512(at);
    const __m512i classes = _mm512_permutex2var_epi8(_mm512_load_si512(numberTable.entry), text,
                                                     _mm512_load_si512(numberTable.entry + blockSize));
    const __m512i values = _mm512_sub_epi8(text, _mm512_set1_epi8('0'));
    const BlockMasks is{_mm512_movepi8_mask(classes) & ~_mm512_movepi8_mask(text),
                        _mm512_cmple_epu8_mask(values, _mm512_set1_epi8(9)),
                        _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('-')),
                        isReal ? _mm512_cmpeq_epi8_mask(text, _mm512_set1_epi8('.')) : 0};
    BlockNumbers numbers;
    if (const Found found = findNumbers<isReal>(is, numbers); found != Found::Numbers)
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
    if (anyAbove(lengths, all, vor::detail::mostDigits))
        return Found::Other;
    block.isShort = !anyAbove(lengths, all, 8);
    block.isLongest = anyAbove(lengths, all, 16);

    block.digits = _mm512_maskz_mov_epi8(is.digits, values);
    block.ends = endAt;
    if constexpr (isReal) {
        block.digits = _mm512_maskz_compress_epi8(~is.points, block.digits);
        block.ends = _mm512_maskz_compress_epi8(_pext_u64(numbers.ends, ~is.points), where);
    }
    block.ends = _mm512_mask_mov_epi8(block.ends, u64(1) << 63, _mm512_set1_epi8(-1));
    return Found::Numbers;
}

// The digits of some numbers, each at the right end of its lane. `which` says for each byte whose it is,
// `place` its distance from the end.
VRN_AVX512 inline __m512i rightAligned(const Block& block, __m512i which, __m512i place) {
    const __m512i from = _mm512_add_epi8(_mm512_permutexvar_epi8(which, block.ends), place);
    const __m512i previous = _mm512_permutexvar_epi8(_mm512_sub_epi8(which, _mm512_set1_epi8(1)), block.ends);
    return _mm512_maskz_permutexvar_epi8(_mm512_cmpgt_epi8_mask(from, previous), from, block.digits);
}

// Four digits to a 32-bit lane, as integers.
VRN_AVX512 inline __m512i joinFours(__m512i digits) {
    const __m512i pairs = _mm512_maddubs_epi16(digits, _mm512_set1_epi16(0x010A));
    return _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00010064));
}

// In each 64-bit lane, the low half times `factor` plus the high half.
VRN_AVX512 inline __m512i joinHalves(__m512i halves, i64 factor) {
    return _mm512_add_epi64(_mm512_mul_epu32(halves, _mm512_set1_epi64(factor)), _mm512_srli_epi64(halves, 32));
}

// The numbers first to first + 7 as integers without their signs and points.
VRN_AVX512 inline __m512i shortIntegers(const Block& block, std::size_t first) {
    const __m512i which = _mm512_add_epi8(load(numberOf8), _mm512_set1_epi8(static_cast<char>(first)));
    return joinHalves(joinFours(rightAligned(block, which, load(byteOf8))), 10000);
}

// Up to sixteen digits each, the last of them `place` before the end; four numbers fill a register.
VRN_AVX512 inline __m512i sixteenDigits(const Block& block, std::size_t first, __m512i place) {
    const __m512i which = _mm512_add_epi8(load(numberOf16), _mm512_set1_epi8(static_cast<char>(first)));
    const __m512i four = joinFours(rightAligned(block, which, place));
    __m512i others = _mm512_setzero_si512();
    if (block.count - first > 4)
        others = joinFours(rightAligned(block, _mm512_add_epi8(which, _mm512_set1_epi8(4)), place));
    const __m512i eights = _mm512_madd_epi16(_mm512_packus_epi32(four, others), _mm512_set1_epi32(0x00012710));
    const __m512i inOrder = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), eights);
    return joinHalves(inOrder, 100000000);
}
VRN_AVX512 inline __m512i longIntegers(const Block& block, std::size_t first) {
    const __m512i last = sixteenDigits(block, first, load(byteOf16));
    if (!block.isLongest)
        return last;
    const __m512i others = sixteenDigits(block, first, _mm512_sub_epi8(load(byteOf16), _mm512_set1_epi8(16)));
    return _mm512_add_epi64(last, _mm512_mullo_epi64(others, _mm512_set1_epi64(10000000000000000)));
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

// Reals for which one division is not enough. They are rounded some hundred at a time, for a call out of the
// reader has all of its registers saved and loaded again.
struct LongNumbers {
    static constexpr std::size_t capacity = 256;
    u64 digits[capacity + 8];
    u64 places[capacity + 8];
    u64 index[capacity + 8]; // of the number
    u64 isNegative[capacity + 8];
    std::size_t count = 0;
};

// Eight integers with their signs; false if one is too large for the type.
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

VRN_AVX512 inline void remember(LongNumbers& numbers, __mmask8 which, __m512i digits, __m512i places, __mmask8 negative,
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

// Rounds them into their places.
template <class Number> [[gnu::noinline]] void roundAll(LongNumbers& numbers, std::byte* out) noexcept {
    for (std::size_t i = 0; i < numbers.count; ++i) {
        const auto magnitude =
            vor::detail::roundDecimal<Number>(numbers.digits[i], static_cast<u32>(numbers.places[i]));
        const Number number = numbers.isNegative[i] != 0 ? -magnitude : magnitude;
        std::memcpy(out + numbers.index[i] * sizeof number, &number, sizeof number);
    }
    numbers.count = 0;
}

template <class Number> void roundLater(LongNumbers& numbers, std::byte* out) noexcept {
    if constexpr (std::is_floating_point_v<Number>)
        if (numbers.count != 0)
            roundAll<Number>(numbers, out);
}

// Eight reals, most of them made by one division that is rounded once (Clinger 1990).
template <class Number>
requires std::is_floating_point_v<Number> VRN_AVX512 inline bool
finish(__m512i digits, __m512i places, __mmask8 negative, std::byte* out, LongNumbers& later, std::size_t index) {
    const __m512d low = _mm512_setr_pd(1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7);
    const __m512d high = _mm512_setr_pd(1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15);
    const __m512i exponents = _mm512_cvtepu8_epi64(_mm512_castsi512_si128(places));
    __m512d values = _mm512_div_pd(_mm512_cvtepu64_pd(digits), _mm512_permutex2var_pd(low, exponents, high));
    u32 inexact = _mm512_cmpgt_epu64_mask(digits, _mm512_set1_epi64(i64(1) << 53)) |
                  _mm512_cmpgt_epu64_mask(exponents, _mm512_set1_epi64(15));
    if constexpr (sizeof(Number) == sizeof(float)) {
        // Rounding twice goes wrong only where the double looks like a tie between two floats.
        const __m512i tail = _mm512_and_si512(_mm512_castpd_si512(values), _mm512_set1_epi64(0x1FFFFFFF));
        inexact |= _mm512_cmpeq_epi64_mask(tail, _mm512_set1_epi64(0x10000000));
    }
    values = _mm512_mask_xor_pd(values, negative, values, _mm512_set1_pd(-0.0));
    if constexpr (sizeof(Number) == sizeof(float))
        _mm256_storeu_ps(reinterpret_cast<float*>(out), _mm512_cvtpd_ps(values));
    else
        _mm512_storeu_pd(out, values);
    if (inexact != 0)
        remember(later, static_cast<__mmask8>(inexact), digits, exponents, negative, index);
    return true;
}

template <class Number>
VRN_AVX512 inline bool convert(const Block& block, std::byte* out, LongNumbers& later, std::size_t index) {
    __m512i places = block.places;
    for (std::size_t first = 0; first < block.count; first += 8) {
        const bool isShort = !std::is_floating_point_v<Number> && block.isShort;
        const __m512i integers = isShort ? shortIntegers(block, first) : longIntegers(block, first);
        if (!finish<Number>(integers, places, static_cast<__mmask8>(block.negative >> first), out, later,
                            index + first))
            return false;
        places = _mm512_alignr_epi64(places, places, 1);
        out += 8 * sizeof(Number);
    }
    return true;
}

template <class Number>
VRN_AVX512 BlockProgress readBlocks(const char* at, const char* end, std::byte* out, std::size_t room) {
    std::size_t numbers = 0;
    LongNumbers later;
    while (static_cast<std::size_t>(end - at) >= blockSize && room - numbers >= mostNumbers) {
        Block block;
        const Found found = find<std::is_floating_point_v<Number>>(at, block);
        if (found == Found::Separators) {
            at += blockSize;
            continue;
        }
        if (found == Found::Other || !convert<Number>(block, out + numbers * sizeof(Number), later, numbers))
            break;
        at += block.length;
        numbers += block.count;
        if (later.count > LongNumbers::capacity - mostNumbers)
            roundLater<Number>(later, out);
    }
    roundLater<Number>(later, out);
    return {at, numbers};
}

} // namespace

template <class Number> BlockReader blockReaderAvx512() noexcept { return readBlocks<Number>; }

#    define VRN_INSTANTIATE(Number) template BlockReader blockReaderAvx512<Number>() noexcept;
VRN_BUFFER_NUMBERS(VRN_INSTANTIATE)

} // namespace vor::velmo_sdk::impl

#endif
