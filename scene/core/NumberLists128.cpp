// Converts groups of sixteen numbers with the vectors of SSE4.1 and NEON, one per 64-bit lane. The digits of a real are
// right-aligned in a slot of sixteen bytes, and one shuffle makes them text. For -3.14159 with 7 places:
//
//   slot     0000000031415900    the first digit at 8, the point before 9
//   moved    3014159             the digits on both sides of the point, and space for it
//   text     -3.14159_           `-`, `.` and the space (`_`) are stored by themselves
#include "scene/core/NumberListGroups.h"

#include "scene/core/Vector128.h"

#if defined(VRN_HAS_VECTOR128)

#    include "scene/core/DecimalArithmetic.h"
#    include "scene/core/FloatDecimals.h"
#    include "scene/core/InstructionSet.h"
#    include "scene/core/PlainNumber.h"
#    include "scene/core/ShortestDecimal.h"

#    include <algorithm>
#    include <bit>
#    include <cmath>
#    include <cstring>

namespace vor {

namespace {

using detail::reciprocal;
using detail::tenToThe;

constexpr std::size_t lanes = 2;
constexpr std::size_t groupSize = 16;
constexpr u32 slotSize = 16;

VRN_VECTOR128_PART U64x2 loadLanes(const u64* from) { return reinterpret_cast<U64x2>(loadBytes(from)); }

// The digits of two numbers below 10^8, one byte each, the first digit lowest.
VRN_VECTOR128_PART U64x2 eightDigits(U64x2 numbers) {
    const U64x2 upper = multiply32(numbers, reciprocal<10000, 40, tenToThe(8)>()) >> 40;
    const U64x2 lower = numbers - multiply32(upper, 10000);
    const auto halves = reinterpret_cast<U16x8>(upper | lower << 32);
    const U16x8 hundreds = multiplyHigh(halves, reciprocal<100, 16 + 3, 10000>()) >> 3;
    const auto rest = reinterpret_cast<U32x4>(halves - hundreds * 100);
    const auto pairs = reinterpret_cast<U16x8>(reinterpret_cast<U32x4>(hundreds) | rest << 16);
    const U16x8 tens = multiplyHigh(pairs, reciprocal<10, 16, 100>());
    const U16x8 ones = pairs - tens * 10;
    return reinterpret_cast<U64x2>(tens | ones << 8);
}

VRN_VECTOR128_PART void replaceByDigits(u64 (&numbers)[groupSize]) {
    for (std::size_t i = 0; i < groupSize; i += lanes) {
        const U64x2 digits = eightDigits(loadLanes(numbers + i));
        std::memcpy(numbers + i, &digits, sizeof digits);
    }
}

// How many of eight digits are zeros: at the start, where the eighth does not count, and at the end.
u32 leadingZeros(u64 digits) noexcept { return static_cast<u32>(std::countr_zero(digits | u64(1) << 56)) / 8; }
u32 trailingZeros(u64 digits) noexcept { return static_cast<u32>(std::countl_zero(digits)) / 8; }

VRN_VECTOR128_PART char* writeShort(u64 digits, bool isNegative, char* out) {
    const u32 skipped = leadingZeros(digits);
    digits = (digits | detail::eightZeros) >> 8 * skipped;
    *out = '-';
    out += isNegative;
    std::memcpy(out, &digits, sizeof digits);
    out += 8 - skipped;
    *out = ' ';
    return out + 1;
}

template <std::integral Number> VRN_VECTOR128_PART char* writeGroup(const Number* numbers, char* out) {
    u64 digits[groupSize];
    u64 largest = 0;
    for (std::size_t i = 0; i < groupSize; ++i) {
        digits[i] = numbers[i] < 0 ? 0 - static_cast<u64>(numbers[i]) : static_cast<u64>(numbers[i]);
        largest = std::max(largest, digits[i]);
    }
    if (sizeof(Number) > 2 && largest >= tenToThe(8))
        return nullptr;
    replaceByDigits(digits);
    for (std::size_t i = 0; i < groupSize; ++i)
        out = writeShort(digits[i], numbers[i] < 0, out);
    return out;
}

// Shuffles that move the digits of a slot to the start: from[first][whole] for `whole` digits before the point, the
// first of them at `first`. The digits after the point move one byte less.
struct alignas(slotSize) Moves {
    u8 from[slotSize][slotSize][slotSize] = {};
    constexpr Moves() {
        for (u32 first = 0; first < slotSize; ++first)
            for (u32 whole = 0; whole < slotSize; ++whole)
                for (u32 i = 0; i < slotSize; ++i)
                    from[first][whole][i] = static_cast<u8>(std::min(first + i - (i > whole), slotSize - 1));
    }
};
constexpr Moves moves;

VRN_VECTOR128_PART bool areInFastRange(const float* numbers) {
    u64 outside = 0;
    for (std::size_t i = 0; i < groupSize; ++i) {
        const u64 bits = std::bit_cast<u32>(numbers[i]) & ~(u32(1) << 31);
        const u64 outsideRange = (bits - detail::minFastBits<float>) | (detail::endOfFastBits<float> - 1 - bits);
        outside |= outsideRange & (0 - bits); // zeros are written, too
    }
    return outside >> 63 == 0;
}

// Digits of a float in a slot. They are below ten times the mantissa, thus below 10 * 2^24 < 2 * 10^8: a ninth digit
// can only be 1.
VRN_VECTOR128_PART void putInSlots(const u64* digits, U64x2* slots) {
    const U64x2 two = loadLanes(digits);
    const U64x2 hasNine = isNegative(tenToThe(8) - 1 - two);
    const U64x2 ninth = hasNine & u64(1) << 56;
    const U64x2 others = eightDigits(two - (hasNine & tenToThe(8)));
    slots[0] = U64x2{ninth[0], others[0]};
    slots[1] = U64x2{ninth[1], others[1]};
}

FloatDecimals floatDecimals(const float* numbers) noexcept {
#    if defined(__x86_64__)
    if (instructionSet() >= InstructionSet::Avx2)
        return floatDecimalsAvx2(numbers);
#    endif
    return floatDecimals128(numbers);
}

// All floats of the fast range fit a slot, with a digit before the point.
constexpr u32 maxPlaces =
    static_cast<u32>(-detail::log10OfThreeQuarters(detail::minFastExponent - detail::RealForm<float>::mantissaBits));
static_assert(1 + 1 + maxPlaces <= slotSize);

VRN_VECTOR128_PART char* writeReal(const U64x2& slot, u32 places, bool isNegative, char* out) {
    // The last digit is never the first one that is visible: a float below 10 has a place.
    const u64 digits = slot[1];
    const u32 firstDigit = 7 + leadingZeros(slot[0] >> 56 | digits << 8);
    const u32 endOfDigits = slotSize - trailingZeros(digits);
    const u32 point = slotSize - places;
    const u32 first = std::min(firstDigit, point - 1);
    const u32 whole = point - first;
    const u32 length = endOfDigits > point ? endOfDigits - first + 1 : whole;
    const U8x16 text = lookUp(reinterpret_cast<U8x16>(slot), loadBytes(moves.from[first][whole])) | '0';
    *out = '-';
    out += isNegative;
    std::memcpy(out, &text, sizeof text);
    out[whole] = '.';
    out[length] = ' ';
    return out + length + 1;
}

// Each loop, and the computation of the decimals, has short chains of dependent instructions, so that the processor
// executes several iterations in parallel.
VRN_VECTOR128_PART char* writeGroup(const float* numbers, char* out) {
    static_assert(groupSize == FloatDecimals::size);
    if (!areInFastRange(numbers))
        return nullptr;
    const FloatDecimals decimals = floatDecimals(numbers);
    U64x2 slots[groupSize];
    for (std::size_t i = 0; i < groupSize; i += lanes)
        putInSlots(decimals.digits + i, slots + i);
    for (std::size_t i = 0; i < groupSize; ++i)
        out = writeReal(slots[i], static_cast<u32>(decimals.places[i]), std::signbit(numbers[i]), out);
    return out;
}

template <class Number> VRN_VECTOR128 ListProgress writeGroups(std::span<const Number> numbers, char* out) noexcept {
    std::size_t at = 0;
    for (; numbers.size() - at >= groupSize; at += groupSize) {
        char* const end = writeGroup(&numbers[at], out);
        if (end == nullptr)
            break;
        out = end;
    }
    return {at, out};
}

} // namespace

template <class Number> ListProgress writeGroups128(std::span<const Number> numbers, char* out) noexcept {
    return writeGroups(numbers, out);
}

template ListProgress writeGroups128(std::span<const i16>, char*) noexcept;
template ListProgress writeGroups128(std::span<const i32>, char*) noexcept;
template ListProgress writeGroups128(std::span<const i64>, char*) noexcept;
template ListProgress writeGroups128(std::span<const u16>, char*) noexcept;
template ListProgress writeGroups128(std::span<const u32>, char*) noexcept;
template ListProgress writeGroups128(std::span<const u64>, char*) noexcept;
template ListProgress writeGroups128(std::span<const float>, char*) noexcept;

} // namespace vor

#endif
