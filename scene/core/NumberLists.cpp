#include "scene/core/NumberLists.h"

#include "scene/core/NumberText.h"
#include "scene/core/ShortestDecimal.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vor {

namespace {

// Eight digits, a byte each, the first one lowest.
u64 eightDigits(u64 number) noexcept {
    const u64 halves = number / 10000 | number % 10000 << 32;
    const u64 hundreds = (halves * 10486 >> 20) & 0x0000007F0000007F;
    const u64 pairs = hundreds | (halves - 100 * hundreds) << 16;
    const u64 tens = (pairs * 103 >> 10) & 0x000F000F000F000F;
    return tens | (pairs - 10 * tens) << 8;
}

constexpr u64 zeros = 0x3030303030303030;

void store(char* to, u64 word) noexcept {
    if constexpr (std::endian::native == std::endian::big)
        word = __builtin_bswap64(word);
    std::memcpy(to, &word, sizeof word);
}

// How many of the eight digits are zeros at the start and at the end.
u32 leadingZeros(u64 digits) noexcept { return static_cast<u32>(std::countr_zero(digits)) / 8; }
u32 trailingZeros(u64 digits) noexcept { return static_cast<u32>(std::countl_zero(digits)) / 8; }

char* writeAny(std::integral auto number, char* out) noexcept {
    return std::to_chars(out, out + listNumberCapacity, number).ptr;
}

char* writeAny(std::floating_point auto number, char* out) noexcept {
    char buffer[realTextCapacity];
    const std::string_view text = writeReal(number, buffer);
    if (std::isnan(number) && std::signbit(number))
        *out++ = '-';
    return std::copy(text.begin(), text.end(), out);
}

template <std::integral Number> char* writeInteger(Number number, char* out) noexcept {
    using Unsigned = std::make_unsigned_t<Number>;
    const bool isNegative = number < 0;
    const auto magnitude = static_cast<Unsigned>(isNegative ? Unsigned(0) - Unsigned(number) : Unsigned(number));
    if constexpr (sizeof(Number) >= sizeof(u32))
        if (magnitude >= 100000000)
            return writeAny(number, out);
    *out = '-';
    out += isNegative;
    const u64 digits = eightDigits(magnitude);
    const u32 skipped = std::min(leadingZeros(digits), 7U);
    store(out, (digits + zeros) >> (8 * skipped));
    return out + 8 - skipped;
}

template <std::integral Number> char* writeList(std::span<const Number> numbers, char* out, ListEnds ends) noexcept {
    const char* const start = out;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        out = writeInteger(numbers[i], out);
        *out++ = ' ';
        ends[i] = static_cast<u32>(out - start);
    }
    return out;
}

// How many numbers are worked on at once.
constexpr std::size_t groupSize = 16;

// The decimals of a group of real numbers, taken apart; each step is a loop that the compiler can do for several
// numbers with one instruction.
template <std::floating_point Real> struct Group {
    using Form = detail::RealForm<Real>;
    using Bits = typename Form::Bits;
    static constexpr Bits signBit = Bits(1) << (sizeof(Bits) * 8 - 1);
    static constexpr std::size_t words = sizeof(Bits) / sizeof(u32); // of eight digits

    u64 bits[groupSize]; // without the sign
    u64 isPlain[groupSize];
    u64 digits[groupSize];
    i64 exponent[groupSize];
    u64 first[groupSize];
    u64 eight[words][groupSize];

    [[gnu::always_inline]] void take(const Real* numbers) noexcept {
        for (std::size_t i = 0; i < groupSize; ++i) {
            const Bits magnitude = std::bit_cast<Bits>(numbers[i]) & ~signBit;
            isPlain[i] = detail::isPlainReal<Real>(magnitude);
            bits[i] = isPlain[i] ? magnitude : 0;
        }
        for (std::size_t i = 0; i < groupSize; ++i) {
            const auto decimal = detail::shortestDecimal<Real>(static_cast<Bits>(bits[i]));
            digits[i] = bits[i] == 0 ? 0 : decimal.digits;
            exponent[i] = bits[i] == 0 ? 0 : decimal.exponent;
        }
        for (std::size_t i = 0; i < groupSize; ++i) {
            u64 rest = digits[i];
            for (std::size_t w = words; w-- > 0; rest /= 100000000)
                eight[w][i] = eightDigits(rest % 100000000);
            first[i] = rest;
        }
    }
};

// A decimal as it is shown: the characters, with zeros on both sides, and which of them.
struct Layout {
    static constexpr u32 before = 8; // zeros
    char text[80];                   // at least 32 characters are read from each shown one on
};

template <std::floating_point Real>
char* show(const Group<Real>& group, std::size_t i, const Layout& layout, bool isNegative, char* out) noexcept {
    constexpr std::size_t size = sizeof(Real) == sizeof(float) ? 16 : 32;
    u32 leading, trailing;
    if constexpr (Group<Real>::words == 1) {
        leading = leadingZeros(group.eight[0][i]);
        trailing = trailingZeros(group.eight[0][i]);
    } else {
        const u64 upper = group.eight[0][i];
        const u64 lower = group.eight[1][i];
        leading = upper != 0 ? leadingZeros(upper) : 8 + leadingZeros(lower);
        trailing = lower != 0 ? trailingZeros(lower) : 8 + trailingZeros(upper);
    }
    constexpr i32 most = static_cast<i32>(Group<Real>::Form::digits);
    const i32 point = most + static_cast<i32>(group.exponent[i]); // digits before it
    const i32 first = std::min(group.first[i] != 0 ? 0 : static_cast<i32>(leading) + 1, point - 1);
    const auto whole = static_cast<u32>(point - first);
    const i32 fraction = most - static_cast<i32>(trailing) - point;
    *out = '-';
    out += isNegative;
    const char* from = layout.text + (static_cast<i32>(Layout::before) + first);
    std::memcpy(out, from, size);
    out[whole] = '.';
    std::memcpy(out + whole + 1, from + whole, size);
    return out + whole + (fraction > 0 ? fraction + 1 : 0);
}

template <std::floating_point Real> char* writeList(std::span<const Real> numbers, char* out, ListEnds ends) noexcept {
    Group<Real> group;
    Layout layouts[groupSize];
    for (Layout& layout : layouts)
        std::memset(layout.text, '0', sizeof layout.text);
    const char* const start = out;
    Real last[groupSize] = {};
    for (std::size_t at = 0; at < numbers.size(); at += groupSize) {
        const std::size_t count = std::min(groupSize, numbers.size() - at);
        const Real* some = numbers.data() + at;
        if (count < groupSize) {
            std::copy_n(some, count, last);
            some = last;
        }
        group.take(some);
        for (std::size_t i = 0; i < groupSize; ++i) {
            char* text = layouts[i].text + Layout::before;
            *text++ = static_cast<char>('0' + group.first[i]);
            for (std::size_t w = 0; w < Group<Real>::words; ++w, text += 8)
                store(text, group.eight[w][i] + zeros);
        }
        for (std::size_t i = 0; i < count; ++i) {
            out = group.isPlain[i] ? show<Real>(group, i, layouts[i], std::signbit(some[i]), out)
                                   : writeAny(some[i], out);
            *out++ = ' ';
            ends[at + i] = static_cast<u32>(out - start);
        }
    }
    return out;
}

} // namespace

template <class Number> char* writeNumberList(std::span<const Number> numbers, char* out, ListEnds ends) noexcept {
    return writeList(numbers, out, ends);
}

template char* writeNumberList(std::span<const i8>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const i16>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const i32>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const i64>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const u8>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const u16>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const u32>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const u64>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const float>, char*, ListEnds) noexcept;
template char* writeNumberList(std::span<const double>, char*, ListEnds) noexcept;

} // namespace vor
