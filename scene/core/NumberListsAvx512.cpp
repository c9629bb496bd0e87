// Eight numbers are taken apart together, a 64-bit lane each. Their digits come to stand in slots of equal size, at the
// right end, with zeros before them. A byte permutation for several slots then makes the texts: it moves what is shown
// to the start of its slot and leaves room for the point, the sign and the space; what is behind it is squeezed out.
// Reals take no step that depends on how long they are; eight integers take the smallest slots that they fit.
#include "scene/core/NumberListsAvx512.h"

#if defined(__x86_64__)

#    include "scene/core/Avx512.h"
#    include "scene/core/ShortestDecimal.h"

#    include <algorithm>
#    include <bit>
#    include <type_traits>

#    define VRN_AVX512_PART VRN_AVX512 __attribute__((always_inline)) inline

namespace vor {

namespace {

constexpr std::size_t lanes = 8;

VRN_AVX512_PART __m512i all(u64 number) { return _mm512_set1_epi64(static_cast<i64>(number)); }
VRN_AVX512_PART __m512i allBytes(char c) { return _mm512_set1_epi8(c); }

// A power of ten as a divisor of numbers below 2^32: numbers * multiplier >> shift.
VRN_AVX512_PART __m512i divided(__m512i numbers, u64 multiplier, unsigned shift) {
    return _mm512_srli_epi64(_mm512_mul_epu32(numbers, all(multiplier)), shift);
}

VRN_AVX512_PART __mmask8 isSome(__m512i numbers) { return _mm512_test_epi64_mask(numbers, numbers); }

// Numbers as the quotient and the remainder of a division by 10^8.
struct Halves {
    __m512i upper;
    __m512i lower;
};
VRN_AVX512_PART Halves splitShort(__m512i numbers) { // below 2^32
    const __m512i upper = divided(numbers, 1441151881, 57);
    return {upper, _mm512_sub_epi64(numbers, _mm512_mul_epu32(upper, all(100000000)))};
}
VRN_AVX512_PART Halves split(__m512i numbers) {
    // Multiplied by a little less than 10^-8 it is never too large, and one too small at most.
    const __m512d quotient = _mm512_mul_pd(_mm512_cvtepu64_pd(numbers), _mm512_set1_pd(0x1.5798EE2308C37p-27));
    const __m512i upper = _mm512_cvttpd_epu64(quotient);
    const __m512i lower = _mm512_sub_epi64(numbers, _mm512_mullo_epi64(upper, all(100000000)));
    const __mmask8 isTooSmall = _mm512_cmpge_epu64_mask(lower, all(100000000));
    return {_mm512_mask_add_epi64(upper, isTooSmall, upper, all(1)),
            _mm512_mask_sub_epi64(lower, isTooSmall, lower, all(100000000))};
}

// The digits of numbers below 10^8, a byte each, the first one lowest.
VRN_AVX512_PART __m512i eightDigits(__m512i numbers) {
    const __m512i upper = divided(numbers, 109951163, 40); // by 10000
    const __m512i lower = _mm512_sub_epi64(numbers, _mm512_mul_epu32(upper, all(10000)));
    const __m512i halves = _mm512_or_si512(upper, _mm512_slli_epi64(lower, 32));
    const __m512i hundreds = _mm512_srli_epi16(_mm512_mulhi_epu16(halves, _mm512_set1_epi16(5243)), 3);
    const __m512i rest = _mm512_sub_epi32(halves, _mm512_madd_epi16(hundreds, _mm512_set1_epi32(100)));
    const __m512i pairs = _mm512_or_si512(hundreds, _mm512_slli_epi32(rest, 16));
    const __m512i tens = _mm512_mulhi_epu16(pairs, _mm512_set1_epi16(6554));
    const __m512i ones = _mm512_sub_epi16(pairs, _mm512_maddubs_epi16(tens, _mm512_set1_epi16(10)));
    return _mm512_or_si512(tens, _mm512_slli_epi16(ones, 8));
}

// How many of eight digits are zeros at the start (at most seven), and at the end.
VRN_AVX512_PART __m512i leadingZeros(__m512i digits) {
    const __m512i some = _mm512_or_si512(digits, all(u64(1) << 56));
    const __m512i lowest = _mm512_and_si512(some, _mm512_sub_epi64(_mm512_setzero_si512(), some));
    return _mm512_srli_epi64(_mm512_sub_epi64(all(63), _mm512_lzcnt_epi64(lowest)), 3);
}
VRN_AVX512_PART __m512i trailingZeros(__m512i digits) { return _mm512_srli_epi64(_mm512_lzcnt_epi64(digits), 3); }

// The slots of eight numbers: words[w] has the w-th eight bytes of each.
template <std::size_t size> struct Slots { __m512i words[size / 8]; };

// What is shown of each slot.
struct Shown {
    __m512i first;  // byte of the slot
    __m512i whole;  // characters before the point
    __m512i length; // with the point, if there is one
    __mmask8 isNegative;
};

// For slots beside each other: the first byte of the lane that a byte belongs to, and its place in the slot.
template <int size> constexpr ByteTable laneOf([](int i) { return i / size * 8; });
template <int size> constexpr ByteTable placeIn([](int i) { return i % size; });

// Slots beside each other, as many as there is room for: the `part`-th of these.
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

// Where the parts of each text stand, in a lane each.
struct Marks {
    __m512i shift; // from a character before the point to its place in the slot
    __m512i point;
    __m512i space;
    __mmask8 isNegative;
};

// Writes the texts of slots that stand beside each other.
template <std::size_t size, bool isReal>
VRN_AVX512_PART char* writeTexts(__m512i slots, const Marks& marks, int part, char* out) {
    constexpr int count = 64 / size;
    const __m512i lane = _mm512_add_epi8(load(laneOf<size>), allBytes(static_cast<char>(8 * count * part)));
    const __m512i place = load(placeIn<size>);
    const __m512i space = _mm512_permutexvar_epi8(lane, marks.space);
    constexpr u64 firstPlaces = ~u64(0) / ((u64(1) << (size - 1)) * 2 - 1); // one bit in `size`
    const u64 minus = _pdep_u64(u64(marks.isNegative) >> (count * part), firstPlaces);
    __m512i from = _mm512_add_epi8(load(bytePositions), _mm512_permutexvar_epi8(lane, marks.shift));
    if constexpr (isReal) {
        const __m512i point = _mm512_permutexvar_epi8(lane, marks.point);
        from = _mm512_mask_sub_epi8(from, _mm512_cmpgt_epi8_mask(place, point), from, allBytes(1));
        slots = _mm512_permutexvar_epi8(from, slots);
        slots = _mm512_mask_mov_epi8(slots, _mm512_cmpeq_epi8_mask(place, point), allBytes('.'));
    } else {
        slots = _mm512_permutexvar_epi8(from, slots);
    }
    slots = _mm512_mask_mov_epi8(slots, _mm512_cmpeq_epi8_mask(place, space), allBytes(' '));
    slots = _mm512_mask_mov_epi8(slots, minus, allBytes('-'));
    const u64 isShown = _mm512_cmple_epi8_mask(place, space);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(isShown, slots));
    return out + std::popcount(isShown);
}

template <bool isReal, std::size_t size>
VRN_AVX512_PART char* write(const Slots<size>& slots, const Shown& shown, char* out) {
    const __m512i signs = _mm512_maskz_set1_epi64(shown.isNegative, 1);
    const Marks marks{_mm512_sub_epi64(shown.first, signs), _mm512_add_epi64(shown.whole, signs),
                      _mm512_add_epi64(shown.length, signs), shown.isNegative};
    for (int part = 0; part < static_cast<int>(size / 8); ++part)
        out = writeTexts<size, isReal>(_mm512_add_epi8(gather(slots, part), allBytes('0')), marks, part, out);
    return out;
}

// Integers, without a point; the slots have no more digits than leave room for the sign and the space.
template <std::size_t size>
VRN_AVX512_PART char* writeIntegers(const Slots<size>& slots, __m512i first, __mmask8 isNegative, char* out) {
    const __m512i length = _mm512_sub_epi64(all(size), first);
    return write<false>(slots, Shown{first, length, length, isNegative}, out);
}

VRN_AVX512_PART char* writeSixDigits(__m512i numbers, __mmask8 isNegative, char* out) {
    const __m512i digits = eightDigits(numbers);
    return writeIntegers(Slots<8>{{digits}}, leadingZeros(digits), isNegative, out);
}

VRN_AVX512_PART char* writeFourteenDigits(const Halves& halves, __mmask8 isNegative, char* out) {
    const Slots<16> slots{{eightDigits(halves.upper), eightDigits(halves.lower)}};
    return writeIntegers(slots,
                         _mm512_mask_mov_epi64(_mm512_add_epi64(leadingZeros(slots.words[1]), all(8)),
                                               isSome(halves.upper), leadingZeros(slots.words[0])),
                         isNegative, out);
}

VRN_AVX512_PART char* writeTwentyDigits(const Halves& halves, __mmask8 isNegative, char* out) {
    const Halves upper = split(halves.upper);
    const Slots<32> slots{
        {_mm512_setzero_si512(), eightDigits(upper.upper), eightDigits(upper.lower), eightDigits(halves.lower)}};
    __m512i first = _mm512_add_epi64(leadingZeros(slots.words[3]), all(24));
    first = _mm512_mask_add_epi64(first, isSome(upper.lower), leadingZeros(slots.words[2]), all(16));
    first = _mm512_mask_add_epi64(first, isSome(upper.upper), leadingZeros(slots.words[1]), all(8));
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

template <std::integral Number> VRN_AVX512_PART char* writeEight(const Number* numbers, char* out) {
    __m512i magnitude = widen(numbers);
    __mmask8 isNegative = 0;
    if constexpr (std::is_signed_v<Number>) {
        isNegative = _mm512_movepi64_mask(magnitude);
        magnitude = _mm512_abs_epi64(magnitude);
    }
    if (sizeof(Number) == 2 || _mm512_cmpge_epu64_mask(magnitude, all(1000000)) == 0)
        return writeSixDigits(magnitude, isNegative, out);
    if constexpr (sizeof(Number) == 4)
        return writeFourteenDigits(splitShort(magnitude), isNegative, out);
    if (_mm512_cmpge_epu64_mask(magnitude, all(100000000000000)) == 0)
        return writeFourteenDigits(split(magnitude), isNegative, out);
    return writeTwentyDigits(split(magnitude), isNegative, out);
}

// What reals become: digits in slots, of which `places` stand behind the point.
template <std::size_t size>
VRN_AVX512_PART char* writeReals(const Slots<size>& slots, __m512i firstDigit, __m512i behindDigits, __m512i places,
                                 __mmask8 isNegative, char* out) {
    const __m512i point = _mm512_sub_epi64(all(size), places);
    const __m512i first = _mm512_min_epi64(firstDigit, _mm512_sub_epi64(point, all(1)));
    const __m512i whole = _mm512_sub_epi64(point, first);
    const __mmask8 hasFraction = _mm512_cmpgt_epi64_mask(behindDigits, point);
    const __m512i length = _mm512_mask_sub_epi64(whole, hasFraction, behindDigits, _mm512_sub_epi64(first, all(1)));
    return write<true>(slots, Shown{first, whole, length, isNegative}, out);
}

// Bits of the floats that fit their slots, with their sign and the space: from 2^-14 on.
constexpr u64 leastShort = detail::leastMiddling<float> + (u64(3) << detail::RealForm<float>::mantissaBits);

struct FloatDecimals {
    __m512i digits;
    __m512i places;
};

// As shortestDecimal().
VRN_AVX512_PART FloatDecimals shortestDecimals(__m512i bits) {
    using Form = detail::RealForm<float>;
    const __m512i powersOfFive = _mm512_setr_epi32(1, 5, 25, 125, 625, 3125, 15625, 78125, 390625, 1953125, 9765625,
                                                   48828125, 244140625, 0, 0, 0);
    const __m512i fraction = _mm512_and_si512(bits, all((1 << Form::mantissaBits) - 1));
    const __m512i mantissa = _mm512_or_si512(fraction, all(1 << Form::mantissaBits));
    const __m512i q = _mm512_sub_epi64(all(Form::bias), _mm512_srli_epi64(bits, Form::mantissaBits)); // its negative
    const __mmask8 isLowerCloser = _mm512_testn_epi64_mask(fraction, fraction);
    const __m512i logarithm = _mm512_add_epi64(_mm512_mul_epu32(q, all(1262611)), all((1 << 22) - 1));
    const __m512i places =
        _mm512_srli_epi64(_mm512_mask_add_epi64(logarithm, isLowerCloser, logarithm, all(524031)), 22);

    const __m512i power = _mm512_maskz_permutexvar_epi32(0x5555, places, powersOfFive);
    const __m512i point = _mm512_sub_epi64(_mm512_add_epi64(q, all(2)), places);
    const __m512i product = _mm512_mul_epu32(_mm512_slli_epi64(mantissa, 2), power);
    const __m512i units = _mm512_srlv_epi64(product, point);
    const __m512i one = _mm512_sllv_epi64(all(1), point);
    const __m512i rest = _mm512_and_si512(product, _mm512_sub_epi64(one, all(1)));
    const __m512i odd = _mm512_and_si512(mantissa, all(1));
    const __m512i above = _mm512_sub_epi64(_mm512_add_epi64(power, power), odd);
    const __m512i below = _mm512_mask_sub_epi64(above, isLowerCloser, above, power);

    const __m512i tens = _mm512_mul_epu32(divided(units, 0xCCCCCCCD, 35), all(10));
    const __m512i restOfTens = _mm512_sub_epi64(product, _mm512_sllv_epi64(tens, point));
    const __m512i ten = _mm512_sllv_epi64(all(10), point);
    const __mmask8 isTensIn = _mm512_cmple_epu64_mask(restOfTens, below);
    const __mmask8 isNextTensIn = _mm512_cmple_epu64_mask(_mm512_sub_epi64(ten, restOfTens), above);
    const __m512i tie = _mm512_and_si512(units, all(1));
    const __mmask8 isNextNearer = _mm512_cmpgt_epu64_mask(_mm512_add_epi64(_mm512_add_epi64(rest, rest), tie), one);
    const __m512i nextTens = _mm512_mask_add_epi64(tens, isNextTensIn, tens, all(10));
    const __m512i nextUnits = _mm512_mask_add_epi64(units, isNextNearer, units, all(1));
    return {_mm512_mask_mov_epi64(nextUnits, isTensIn ^ isNextTensIn, nextTens), places};
}

VRN_AVX512_PART char* writeEight(const float* numbers, char* out) {
    using Form = detail::RealForm<float>;
    const __m256i raw = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(numbers));
    const __mmask8 isNegative = _mm256_movepi32_mask(raw);
    const __m512i bits = _mm512_and_si512(_mm512_cvtepu32_epi64(raw), all(0x7FFFFFFF));
    const __mmask8 isZero = _mm512_testn_epi64_mask(bits, bits);
    const __mmask8 isShort = _mm512_cmplt_epu64_mask(_mm512_sub_epi64(bits, all(leastShort)),
                                                     all(detail::endOfMiddling<float> - leastShort));
    if ((isZero | isShort) != 0xFF)
        return nullptr;
    constexpr u64 withoutFraction = (u64(Form::bias) << Form::mantissaBits) + 1; // in place of a zero
    const FloatDecimals decimals = shortestDecimals(_mm512_mask_mov_epi64(bits, isZero, all(withoutFraction)));
    const __m512i digits = _mm512_maskz_mov_epi64(static_cast<__mmask8>(~isZero), decimals.digits);

    // The mantissa is below 2^24, and the digits below ten times of it: the first of nine is zero or one.
    const __mmask8 hasNine = _mm512_cmpge_epu64_mask(digits, all(100000000));
    const Slots<16> slots{{_mm512_maskz_mov_epi64(hasNine, all(u64(1) << 56)),
                           eightDigits(_mm512_mask_sub_epi64(digits, hasNine, digits, all(100000000)))}};
    const __m512i first =
        _mm512_mask_mov_epi64(_mm512_add_epi64(leadingZeros(slots.words[1]), all(8)), hasNine, all(7));
    const __m512i behind = _mm512_sub_epi64(all(16), trailingZeros(slots.words[1]));
    return writeReals(slots, first, behind, decimals.places, isNegative, out);
}

template <class Number> VRN_AVX512 ListProgress writeEights(std::span<const Number> numbers, char* out) noexcept {
    std::size_t at = 0;
    for (; numbers.size() - at >= lanes; at += lanes) {
        char* const end = writeEight(&numbers[at], out);
        if (end == nullptr)
            break;
        out = end;
    }
    return {at, out};
}

// For doubles, the decimals are found one by one, some ahead of what is written: words that have just been written are
// not there yet as a whole.
struct DoubleDecimals {
    static constexpr std::size_t capacity = 4 * lanes;
    alignas(64) u64 digits[capacity];
    alignas(64) u64 places[capacity];
    std::size_t count = 0; // of whole eights that are not written the long way

    explicit DoubleDecimals(std::span<const double> numbers) noexcept {
        for (const double number : numbers) {
            const u64 bits = std::bit_cast<u64>(number) & ~(u64(1) << 63);
            const bool isZero = bits == 0;
            if (!isZero && !detail::isMiddling<double>(bits))
                break;
            const auto decimal = detail::shortestDecimal<double>(isZero ? std::bit_cast<u64>(1.0) : bits);
            digits[count] = isZero ? 0 : decimal.digits;
            places[count] = isZero ? 0 : static_cast<u64>(decimal.places);
            ++count;
        }
        count -= count % lanes;
    }
};

VRN_AVX512_PART char* writeEight(const double* numbers, const DoubleDecimals& decimals, std::size_t at, char* out) {
    const __mmask8 isNegative = _mm512_movepi64_mask(_mm512_loadu_si512(numbers));
    const Halves halves = split(_mm512_load_si512(decimals.digits + at));
    const Halves upper = splitShort(halves.upper);
    const Slots<32> slots{{_mm512_setzero_si512(), _mm512_slli_epi64(upper.upper, 56), eightDigits(upper.lower),
                           eightDigits(halves.lower)}};
    __m512i first = _mm512_add_epi64(leadingZeros(slots.words[3]), all(24));
    first = _mm512_mask_add_epi64(first, isSome(upper.lower), leadingZeros(slots.words[2]), all(16));
    first = _mm512_mask_mov_epi64(first, isSome(upper.upper), all(15));
    __m512i behind = _mm512_sub_epi64(all(24), trailingZeros(slots.words[2]));
    behind = _mm512_mask_sub_epi64(behind, isSome(halves.lower), all(32), trailingZeros(slots.words[3]));
    return writeReals(slots, first, behind, _mm512_load_si512(decimals.places + at), isNegative, out);
}

template <> VRN_AVX512 ListProgress writeEights(std::span<const double> numbers, char* out) noexcept {
    std::size_t at = 0;
    while (numbers.size() - at >= lanes) {
        const DoubleDecimals decimals(numbers.subspan(at, std::min(DoubleDecimals::capacity, numbers.size() - at)));
        if (decimals.count == 0)
            break;
        for (std::size_t i = 0; i < decimals.count; i += lanes, at += lanes)
            out = writeEight(&numbers[at], decimals, i, out);
    }
    return {at, out};
}

} // namespace

template <class Number> ListProgress writeEightsAvx512(std::span<const Number> numbers, char* out) noexcept {
    return writeEights(numbers, out);
}

template ListProgress writeEightsAvx512(std::span<const i16>, char*) noexcept;
template ListProgress writeEightsAvx512(std::span<const i32>, char*) noexcept;
template ListProgress writeEightsAvx512(std::span<const i64>, char*) noexcept;
template ListProgress writeEightsAvx512(std::span<const u16>, char*) noexcept;
template ListProgress writeEightsAvx512(std::span<const u32>, char*) noexcept;
template ListProgress writeEightsAvx512(std::span<const u64>, char*) noexcept;
template ListProgress writeEightsAvx512(std::span<const float>, char*) noexcept;
template ListProgress writeEightsAvx512(std::span<const double>, char*) noexcept;

} // namespace vor

#endif
