// Converts eight numbers at a time, one per 64-bit lane. The digits of each are right-aligned in a slot of 8, 16 or 32
// bytes, with leading zeros; the slots of eight integers are the smallest that fit all of them. Registers of
// neighbouring slots then become text: a byte permutation moves the visible digits to the start of their slot, leaving
// gaps for the sign, the point and the space, and a compressing store removes the bytes after the space. For reals, no
// step depends on their length. In a register with two slots of 16 bytes (of four):
//
//   slots    0000000031415900 0000000000125000    -3.14159 with 7 places, 12.5 with 4
//   marks    shift  7         shift  10           first visible digit, less one for a minus sign
//            point  2         point  2            position in the slot
//            space  8         space  4
//   moved    -3.14159_        12.5_               `-`, `.` and the space (`_`) replace what was moved there
//   stored   -3.14159_12.5_
#include "scene/core/NumberListGroups.h"

#if defined(__x86_64__)

#    include "scene/core/Avx512.h"
#    include "scene/core/DecimalArithmetic.h"
#    include "scene/core/ShortestDecimal.h"

#    include <algorithm>
#    include <bit>
#    include <type_traits>

#    define VRN_AVX512_PART VRN_AVX512 __attribute__((always_inline)) inline

namespace vor {

namespace {

using detail::reciprocal;
using detail::tenToThe;

constexpr std::size_t lanes = 8;

// The digits of an integer in a slot of so many bytes, next to its sign and its space.
constexpr unsigned maxSlotDigits(unsigned size) { return size - 2; }

VRN_AVX512_PART __m512i broadcast(u64 number) { return _mm512_set1_epi64(static_cast<i64>(number)); }
VRN_AVX512_PART __m512i broadcastBytes(char c) { return _mm512_set1_epi8(c); }

// Numbers below 2^32, divided by multiplying with a reciprocal().
VRN_AVX512_PART __m512i divide(__m512i numbers, u64 multiplier, unsigned shift) {
    return _mm512_srli_epi64(_mm512_mul_epu32(numbers, broadcast(multiplier)), shift);
}

VRN_AVX512_PART __mmask8 nonZeroMask(__m512i numbers) { return _mm512_test_epi64_mask(numbers, numbers); }

// The quotients and remainders of a division by 10^8.
struct Halves {
    __m512i upper;
    __m512i lower;
};
VRN_AVX512_PART Halves splitShort(__m512i numbers) { // below 2^32
    const __m512i upper = divide(numbers, reciprocal<tenToThe(8), 57, (u64(1) << 32)>(), 57);
    return {upper, _mm512_sub_epi64(numbers, _mm512_mul_epu32(upper, broadcast(tenToThe(8))))};
}
VRN_AVX512_PART Halves split(__m512i numbers) {
    // Rounding happens in the conversion, in the constant and in the product, by at most half a unit in the last place
    // each. A factor three units below 10^-8 keeps the quotient from being too large; it is at most one too small.
    constexpr double factor = 1e-8 - 3 * 0x1p-79;
    static_assert(factor == 0x1.5798EE2308C37p-27);
    const __m512d quotient = _mm512_mul_pd(_mm512_cvtepu64_pd(numbers), _mm512_set1_pd(factor));
    const __m512i upper = _mm512_cvttpd_epu64(quotient);
    const __m512i lower = _mm512_sub_epi64(numbers, _mm512_mullo_epi64(upper, broadcast(tenToThe(8))));
    const __mmask8 isTooSmall = _mm512_cmpge_epu64_mask(lower, broadcast(tenToThe(8)));
    return {_mm512_mask_add_epi64(upper, isTooSmall, upper, broadcast(1)),
            _mm512_mask_sub_epi64(lower, isTooSmall, lower, broadcast(tenToThe(8)))};
}

// The digits of numbers below 10^8, one byte each, the first digit lowest. `mulhi` shifts by 16 bits.
VRN_AVX512_PART __m512i eightDigits(__m512i numbers) {
    const __m512i upper = divide(numbers, reciprocal<10000, 40, tenToThe(8)>(), 40);
    const __m512i lower = _mm512_sub_epi64(numbers, _mm512_mul_epu32(upper, broadcast(10000)));
    const __m512i halves = _mm512_or_si512(upper, _mm512_slli_epi64(lower, 32));
    const __m512i hundreds =
        _mm512_srli_epi16(_mm512_mulhi_epu16(halves, _mm512_set1_epi16(reciprocal<100, 16 + 3, 10000>())), 3);
    const __m512i rest = _mm512_sub_epi32(halves, _mm512_madd_epi16(hundreds, _mm512_set1_epi32(100)));
    const __m512i pairs = _mm512_or_si512(hundreds, _mm512_slli_epi32(rest, 16));
    const __m512i tens = _mm512_mulhi_epu16(pairs, _mm512_set1_epi16(static_cast<i16>(reciprocal<10, 16, 100>())));
    const __m512i ones = _mm512_sub_epi16(pairs, _mm512_maddubs_epi16(tens, _mm512_set1_epi16(10)));
    return _mm512_or_si512(tens, _mm512_slli_epi16(ones, 8));
}

// How many of eight digits are zeros: at the start, where the eighth does not count, and at the end.
VRN_AVX512_PART __m512i leadingZeros(__m512i digits) {
    const __m512i some = _mm512_or_si512(digits, broadcast(u64(1) << 56)); // in the eighth byte
    const __m512i lowest = _mm512_and_si512(some, _mm512_sub_epi64(_mm512_setzero_si512(), some));
    return _mm512_srli_epi64(_mm512_sub_epi64(broadcast(63), _mm512_lzcnt_epi64(lowest)), 3);
}
VRN_AVX512_PART __m512i trailingZeros(__m512i digits) { return _mm512_srli_epi64(_mm512_lzcnt_epi64(digits), 3); }

// The slots of eight numbers: words[w] has the w-th eight bytes of each.
template <std::size_t size> struct Slots { __m512i words[size / 8]; };

// The visible part of each slot, one lane each.
struct VisibleText {
    __m512i first;  // offset in the slot
    __m512i whole;  // digits before the point
    __m512i length; // digits, and one more for the point if there is one
    __mmask8 isNegative;
};

// For byte i of a register of neighbouring slots: the first byte of the 64-bit lane with the marks of its slot, and its
// offset in the slot.
template <int size> constexpr ByteTable laneOf([](int i) { return i / size * 8; });
template <int size> constexpr ByteTable offsetIn([](int i) { return i % size; });

// Gathers the words of the `part`-th group of slots that fill a register together.
VRN_AVX512_PART __m512i gather(const Slots<8>& slots, int) { return slots.words[0]; }
VRN_AVX512_PART __m512i gather(const Slots<16>& slots, int part) {
    const __m512i order = _mm512_add_epi64(_mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11), _mm512_set1_epi64(4 * part));
    return _mm512_permutex2var_epi64(slots.words[0], order, slots.words[1]);
}
VRN_AVX512_PART __m512i gather(const Slots<32>& slots, int part) {
    const __m512i order = _mm512_add_epi64(_mm512_setr_epi64(0, 8, 0, 8, 1, 9, 1, 9), _mm512_set1_epi64(2 * part));
    return _mm512_mask_blend_epi64(0b11001100, _mm512_permutex2var_epi64(slots.words[0], order, slots.words[1]),
                                   _mm512_permutex2var_epi64(slots.words[2], order, slots.words[3]));
}

// The layout of each text, one lane each; positions are offsets in the slot.
struct Marks {
    __m512i shift; // by which digits before the point move left; those after it move one less
    __m512i point;
    __m512i space;
    __mmask8 isNegative;
};

// Writes the texts of a register of neighbouring slots.
template <std::size_t size, bool isReal>
VRN_AVX512_PART char* writeTexts(__m512i slots, const Marks& marks, int part, char* out) {
    constexpr int count = 64 / size;
    const __m512i lane = _mm512_add_epi8(load(laneOf<size>), broadcastBytes(static_cast<char>(8 * count * part)));
    const __m512i offset = load(offsetIn<size>);
    const __m512i space = _mm512_permutexvar_epi8(lane, marks.space);
    constexpr u64 slotStarts = ~u64(0) / (~u64(0) >> (64 - size)); // one bit in `size`
    const u64 minus = _pdep_u64(u64(marks.isNegative) >> (count * part), slotStarts);
    __m512i from = _mm512_add_epi8(load(bytePositions), _mm512_permutexvar_epi8(lane, marks.shift));
    if constexpr (isReal) {
        const __m512i point = _mm512_permutexvar_epi8(lane, marks.point);
        from = _mm512_mask_sub_epi8(from, _mm512_cmpgt_epi8_mask(offset, point), from, broadcastBytes(1));
        slots = _mm512_permutexvar_epi8(from, slots);
        slots = _mm512_mask_mov_epi8(slots, _mm512_cmpeq_epi8_mask(offset, point), broadcastBytes('.'));
    } else {
        slots = _mm512_permutexvar_epi8(from, slots);
    }
    slots = _mm512_mask_mov_epi8(slots, _mm512_cmpeq_epi8_mask(offset, space), broadcastBytes(' '));
    slots = _mm512_mask_mov_epi8(slots, minus, broadcastBytes('-'));
    const u64 isVisible = _mm512_cmple_epi8_mask(offset, space);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(isVisible, slots));
    return out + std::popcount(isVisible);
}

template <bool isReal, std::size_t size>
VRN_AVX512_PART char* write(const Slots<size>& slots, const VisibleText& visible, char* out) {
    const __m512i signs = _mm512_maskz_set1_epi64(visible.isNegative, 1);
    const Marks marks{_mm512_sub_epi64(visible.first, signs), _mm512_add_epi64(visible.whole, signs),
                      _mm512_add_epi64(visible.length, signs), visible.isNegative};
    for (int part = 0; part < static_cast<int>(size / 8); ++part)
        out = writeTexts<size, isReal>(_mm512_add_epi8(gather(slots, part), broadcastBytes('0')), marks, part, out);
    return out;
}

// Slots with at most maxSlotDigits().
template <std::size_t size>
VRN_AVX512_PART char* writeIntegers(const Slots<size>& slots, __m512i first, __mmask8 isNegative, char* out) {
    const __m512i length = _mm512_sub_epi64(broadcast(size), first);
    return write<false>(slots, VisibleText{first, length, length, isNegative}, out);
}

VRN_AVX512_PART char* writeInSlotsOf8(__m512i numbers, __mmask8 isNegative, char* out) {
    const __m512i digits = eightDigits(numbers);
    return writeIntegers(Slots<8>{{digits}}, leadingZeros(digits), isNegative, out);
}

VRN_AVX512_PART char* writeInSlotsOf16(const Halves& halves, __mmask8 isNegative, char* out) {
    const Slots<16> slots{{eightDigits(halves.upper), eightDigits(halves.lower)}};
    return writeIntegers(slots,
                         _mm512_mask_mov_epi64(_mm512_add_epi64(leadingZeros(slots.words[1]), broadcast(8)),
                                               nonZeroMask(halves.upper), leadingZeros(slots.words[0])),
                         isNegative, out);
}

VRN_AVX512_PART char* writeInSlotsOf32(const Halves& halves, __mmask8 isNegative, char* out) {
    const Halves upper = split(halves.upper);
    const Slots<32> slots{
        {_mm512_setzero_si512(), eightDigits(upper.upper), eightDigits(upper.lower), eightDigits(halves.lower)}};
    __m512i first = _mm512_add_epi64(leadingZeros(slots.words[3]), broadcast(24));
    first = _mm512_mask_add_epi64(first, nonZeroMask(upper.lower), leadingZeros(slots.words[2]), broadcast(16));
    first = _mm512_mask_add_epi64(first, nonZeroMask(upper.upper), leadingZeros(slots.words[1]), broadcast(8));
    return writeIntegers(slots, first, isNegative, out);
}

template <class Number> VRN_AVX512_PART __m512i widen(const Number* numbers) {
    if constexpr (sizeof(Number) == 8)
        return _mm512_loadu_si512(numbers);
    else if constexpr (std::is_same_v<Number, i32>)
        return _mm512_cvtepi32_epi64(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(numbers)));
    else if constexpr (std::is_same_v<Number, u32>)
        return _mm512_cvtepu32_epi64(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(numbers)));
    else if constexpr (std::is_same_v<Number, i16>)
        return _mm512_cvtepi16_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(numbers)));
    else
        return _mm512_cvtepu16_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(numbers)));
}

template <std::integral Number> VRN_AVX512_PART char* writeGroup(const Number* numbers, char* out) {
    __m512i magnitude = widen(numbers);
    __mmask8 isNegative = 0;
    if constexpr (std::is_signed_v<Number>) {
        isNegative = _mm512_movepi64_mask(magnitude);
        magnitude = _mm512_abs_epi64(magnitude);
    }
    if (sizeof(Number) == 2 || _mm512_cmpge_epu64_mask(magnitude, broadcast(tenToThe(maxSlotDigits(8)))) == 0)
        return writeInSlotsOf8(magnitude, isNegative, out);
    if constexpr (sizeof(Number) == 4)
        return writeInSlotsOf16(splitShort(magnitude), isNegative, out);
    if (_mm512_cmpge_epu64_mask(magnitude, broadcast(tenToThe(maxSlotDigits(16)))) == 0)
        return writeInSlotsOf16(split(magnitude), isNegative, out);
    return writeInSlotsOf32(split(magnitude), isNegative, out);
}

// Writes reals: digits in slots, `places` of them after the point; [firstDigit, endOfDigits) are the offsets of the
// nonzero ones.
template <std::size_t size>
VRN_AVX512_PART char* writeReals(const Slots<size>& slots, __m512i firstDigit, __m512i endOfDigits, __m512i places,
                                 __mmask8 isNegative, char* out) {
    const __m512i point = _mm512_sub_epi64(broadcast(size), places);
    const __m512i first = _mm512_min_epi64(firstDigit, _mm512_sub_epi64(point, broadcast(1)));
    const __m512i whole = _mm512_sub_epi64(point, first);
    const __mmask8 hasFraction = _mm512_cmpgt_epi64_mask(endOfDigits, point);
    const __m512i length =
        _mm512_mask_sub_epi64(whole, hasFraction, endOfDigits, _mm512_sub_epi64(first, broadcast(1)));
    return write<true>(slots, VisibleText{first, whole, length, isNegative}, out);
}

// The smallest float, without its sign, whose text fits a slot of 16 bytes: from 2^-14 on there are at most 12 places,
// one digit and the point before them, a sign and a space.
constexpr i32 minSlotExponent = -14;
constexpr i32 maxSlotPlaces = -detail::log10OfThreeQuarters(minSlotExponent - detail::RealForm<float>::mantissaBits);
static_assert(maxSlotPlaces + 4 <= 16);
constexpr u64 minSlotBits = detail::minFastBits<float> +
                            (u64(minSlotExponent - detail::minFastExponent) << detail::RealForm<float>::mantissaBits);

struct FloatDecimals {
    __m512i digits;
    __m512i places;
};

// The same steps as shortestDecimal().
VRN_AVX512_PART FloatDecimals shortestDecimals(__m512i bits) {
    using Form = detail::RealForm<float>;
    static_assert(maxSlotPlaces == 12, "the last power of five below; the zeros fill the register");
    const __m512i powersOfFive = _mm512_setr_epi32(1, 5, 25, 125, 625, 3125, 15625, 78125, 390625, 1953125, 9765625,
                                                   48828125, 244140625, 0, 0, 0);
    const __m512i fraction = _mm512_and_si512(bits, broadcast((1 << Form::mantissaBits) - 1));
    const __m512i mantissa = _mm512_or_si512(fraction, broadcast(1 << Form::mantissaBits));
    const __m512i minusQ = _mm512_sub_epi64(broadcast(Form::bias), _mm512_srli_epi64(bits, Form::mantissaBits));
    const __mmask8 isLowerCloser = _mm512_testn_epi64_mask(fraction, fraction);
    // places = ceil(-q * log10(2)), hence the 2^22 - 1.
    const __m512i logarithm = _mm512_add_epi64(_mm512_mul_epu32(minusQ, broadcast(detail::log10OfTwo)),
                                               broadcast((1 << detail::logFractionBits) - 1));
    const __m512i places = _mm512_srli_epi64(
        _mm512_mask_add_epi64(logarithm, isLowerCloser, logarithm, broadcast(detail::log10OfFourThirds)),
        detail::logFractionBits);

    const __m512i power = _mm512_maskz_permutexvar_epi32(0x5555, places, powersOfFive);
    const __m512i point = _mm512_sub_epi64(_mm512_add_epi64(minusQ, broadcast(2)), places);
    const __m512i product = _mm512_mul_epu32(_mm512_slli_epi64(mantissa, 2), power);
    const __m512i units = _mm512_srlv_epi64(product, point);
    const __m512i one = _mm512_sllv_epi64(broadcast(1), point);
    const __m512i rest = _mm512_and_si512(product, _mm512_sub_epi64(one, broadcast(1)));
    const __m512i odd = _mm512_and_si512(mantissa, broadcast(1));
    const __m512i above = _mm512_sub_epi64(_mm512_add_epi64(power, power), odd);
    const __m512i below = _mm512_mask_sub_epi64(above, isLowerCloser, above, power);

    const __m512i tens = _mm512_mul_epu32(divide(units, reciprocal<10, 35, (u64(1) << 32)>(), 35), broadcast(10));
    const __m512i restOfTens = _mm512_sub_epi64(product, _mm512_sllv_epi64(tens, point));
    const __m512i ten = _mm512_sllv_epi64(broadcast(10), point);
    const __mmask8 isTensIn = _mm512_cmple_epu64_mask(restOfTens, below);
    const __mmask8 isNextTensIn = _mm512_cmple_epu64_mask(_mm512_sub_epi64(ten, restOfTens), above);
    const __m512i tie = _mm512_and_si512(units, broadcast(1));
    const __mmask8 isNextNearer = _mm512_cmpgt_epu64_mask(_mm512_add_epi64(_mm512_add_epi64(rest, rest), tie), one);
    const __m512i nextTens = _mm512_mask_add_epi64(tens, isNextTensIn, tens, broadcast(10));
    const __m512i nextUnits = _mm512_mask_add_epi64(units, isNextNearer, units, broadcast(1));
    return {_mm512_mask_mov_epi64(nextUnits, isTensIn ^ isNextTensIn, nextTens), places};
}

VRN_AVX512_PART char* writeGroup(const float* numbers, char* out) {
    using Form = detail::RealForm<float>;
    const __m256i raw = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(numbers));
    const __mmask8 isNegative = _mm256_movepi32_mask(raw);
    const __m512i bits = _mm512_and_si512(_mm512_cvtepu32_epi64(raw), broadcast(~(u32(1) << 31)));
    const __mmask8 isZero = _mm512_testn_epi64_mask(bits, bits);
    const __mmask8 isShort = _mm512_cmplt_epu64_mask(_mm512_sub_epi64(bits, broadcast(minSlotBits)),
                                                     broadcast(detail::endOfFastBits<float> - minSlotBits));
    if ((isZero | isShort) != 0xFF)
        return nullptr;
    constexpr u64 placeholder = (u64(Form::bias) << Form::mantissaBits) + 1; // for zeros: an integer, so 0 places
    const FloatDecimals decimals = shortestDecimals(_mm512_mask_mov_epi64(bits, isZero, broadcast(placeholder)));
    const __m512i digits = _mm512_maskz_mov_epi64(static_cast<__mmask8>(~isZero), decimals.digits);

    // Digits are below ten times the mantissa, thus below 10 * 2^24 < 2 * 10^8: a ninth digit can only be 1.
    const __mmask8 hasNine = _mm512_cmpge_epu64_mask(digits, broadcast(tenToThe(8)));
    const Slots<16> slots{{_mm512_maskz_mov_epi64(hasNine, broadcast(u64(1) << 56)),
                           eightDigits(_mm512_mask_sub_epi64(digits, hasNine, digits, broadcast(tenToThe(8))))}};
    const __m512i first =
        _mm512_mask_mov_epi64(_mm512_add_epi64(leadingZeros(slots.words[1]), broadcast(8)), hasNine, broadcast(7));
    const __m512i end = _mm512_sub_epi64(broadcast(16), trailingZeros(slots.words[1]));
    return writeReals(slots, first, end, decimals.places, isNegative, out);
}

template <class Number> VRN_AVX512 ListProgress writeGroups(std::span<const Number> numbers, char* out) noexcept {
    std::size_t at = 0;
    for (; numbers.size() - at >= lanes; at += lanes) {
        char* const end = writeGroup(&numbers[at], out);
        if (end == nullptr)
            break;
        out = end;
    }
    return {at, out};
}

// The decimals of doubles are computed one by one, a batch ahead of the writing: a vector load that follows the stores
// of its elements immediately would stall for lack of store forwarding.
struct DoubleDecimals {
    static constexpr std::size_t capacity = 4 * lanes;
    alignas(64) u64 digits[capacity];
    alignas(64) u64 places[capacity];
    std::size_t count = 0; // a multiple of eight; ends before a double that needs the general path

    explicit DoubleDecimals(std::span<const double> numbers) noexcept {
        for (const double number : numbers) {
            const u64 bits = std::bit_cast<u64>(number) & ~(u64(1) << 63);
            const bool isZero = bits == 0;
            if (!isZero && !detail::isInFastRange<double>(bits))
                break;
            const auto decimal = detail::shortestDecimal<double>(isZero ? std::bit_cast<u64>(1.0) : bits);
            digits[count] = isZero ? 0 : decimal.digits;
            places[count] = isZero ? 0 : static_cast<u64>(decimal.places);
            ++count;
        }
        count -= count % lanes;
    }
};

VRN_AVX512_PART char* writeGroup(const double* numbers, const DoubleDecimals& decimals, std::size_t at, char* out) {
    const __mmask8 isNegative = _mm512_movepi64_mask(_mm512_loadu_si512(numbers));
    const Halves halves = split(_mm512_load_si512(decimals.digits + at));
    const Halves upper = splitShort(halves.upper);
    const Slots<32> slots{{_mm512_setzero_si512(), _mm512_slli_epi64(upper.upper, 56), eightDigits(upper.lower),
                           eightDigits(halves.lower)}};
    __m512i first = _mm512_add_epi64(leadingZeros(slots.words[3]), broadcast(24));
    first = _mm512_mask_add_epi64(first, nonZeroMask(upper.lower), leadingZeros(slots.words[2]), broadcast(16));
    first = _mm512_mask_mov_epi64(first, nonZeroMask(upper.upper), broadcast(15));
    __m512i end = _mm512_sub_epi64(broadcast(24), trailingZeros(slots.words[2]));
    end = _mm512_mask_sub_epi64(end, nonZeroMask(halves.lower), broadcast(32), trailingZeros(slots.words[3]));
    return writeReals(slots, first, end, _mm512_load_si512(decimals.places + at), isNegative, out);
}

template <> VRN_AVX512 ListProgress writeGroups(std::span<const double> numbers, char* out) noexcept {
    std::size_t at = 0;
    while (numbers.size() - at >= lanes) {
        const DoubleDecimals decimals(numbers.subspan(at, std::min(DoubleDecimals::capacity, numbers.size() - at)));
        if (decimals.count == 0)
            break;
        for (std::size_t i = 0; i < decimals.count; i += lanes, at += lanes)
            out = writeGroup(&numbers[at], decimals, i, out);
    }
    return {at, out};
}

} // namespace

template <class Number> ListProgress writeGroupsAvx512(std::span<const Number> numbers, char* out) noexcept {
    return writeGroups(numbers, out);
}

template ListProgress writeGroupsAvx512(std::span<const i16>, char*) noexcept;
template ListProgress writeGroupsAvx512(std::span<const i32>, char*) noexcept;
template ListProgress writeGroupsAvx512(std::span<const i64>, char*) noexcept;
template ListProgress writeGroupsAvx512(std::span<const u16>, char*) noexcept;
template ListProgress writeGroupsAvx512(std::span<const u32>, char*) noexcept;
template ListProgress writeGroupsAvx512(std::span<const u64>, char*) noexcept;
template ListProgress writeGroupsAvx512(std::span<const float>, char*) noexcept;
template ListProgress writeGroupsAvx512(std::span<const double>, char*) noexcept;

} // namespace vor

#endif
