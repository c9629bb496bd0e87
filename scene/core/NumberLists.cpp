#include "scene/core/NumberLists.h"

#include "scene/core/InstructionSet.h"
#include "scene/core/NumberListsAvx512.h"
#include "scene/core/NumberText.h"
#include "scene/core/ShortestDecimal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace vor {

namespace {

// Reals are worked on in groups: what has just been written in pieces could not be read back as a whole without
// waiting.
constexpr std::size_t groupSize = 16;

// The digits of a number below 10^8, a byte each, the first one lowest. Divisions are multiplications, exact for these
// numbers.
u64 eightDigits(u64 number) noexcept {
    const u64 upper = (number * 109951163) >> 40; // by 10000
    const u64 halves = upper | (number - 10000 * upper) << 32;
    const u64 hundreds = ((halves * 10486) >> 20) & 0x0000007F0000007F;
    const u64 pairs = hundreds | (halves - 100 * hundreds) << 16;
    const u64 tens = ((pairs * 103) >> 10) & 0x000F000F000F000F;
    return tens | (pairs - 10 * tens) << 8;
}

constexpr u64 zeros = 0x3030303030303030;

void storeText(u64 digits, char* to) noexcept {
    digits += zeros;
    if constexpr (std::endian::native == std::endian::big)
        digits = __builtin_bswap64(digits);
    std::memcpy(to, &digits, sizeof digits);
}

// How many of eight digits are zeros at the start and at the end.
u32 leadingZeros(u64 digits) noexcept { return static_cast<u32>(std::countr_zero(digits)) / 8; }
u32 trailingZeros(u64 digits) noexcept { return static_cast<u32>(std::countl_zero(digits)) / 8; }

// The digits but for the zeros that they begin with; at least one.
char* storeShort(u64 digits, char* out) noexcept {
    const u32 skipped = std::min(leadingZeros(digits), 7U);
    storeText(digits >> (8 * skipped), out);
    return out + 8 - skipped;
}

// Numbers of more than eight digits.
char* writeLarge(u64 number, char* out) noexcept {
    constexpr u64 unit = 100000000;
    const u64 upper = number / unit;
    if (upper >= unit) {
        out = storeShort(eightDigits(upper / unit), out);
        storeText(eightDigits(upper % unit), out);
        out += 8;
    } else {
        out = storeShort(eightDigits(upper), out);
    }
    storeText(eightDigits(number % unit), out);
    return out + 8;
}

// The long way, for every number.
char* writeAny(std::floating_point auto number, char* out) noexcept {
    char buffer[realTextCapacity];
    const std::string_view text = writeReal(number, buffer);
    if (std::isnan(number) && std::signbit(number))
        *out++ = '-';
    return std::copy(text.begin(), text.end(), out);
}

// Numbers of one byte, each with its text.
struct ByteText {
    std::array<char, 7> text{};
    u8 length = 0;
};
constexpr std::array<ByteText, 256> byteTexts(bool isSigned) noexcept {
    std::array<ByteText, 256> texts{};
    for (int i = 0; i < 256; ++i) {
        ByteText& text = texts[static_cast<std::size_t>(i)];
        const bool isNegative = isSigned && i >= 128;
        const int magnitude = isNegative ? 256 - i : i;
        if (isNegative)
            text.text[text.length++] = '-';
        for (const int unit : {100, 10, 1})
            if (magnitude >= unit || unit == 1)
                text.text[text.length++] = static_cast<char>('0' + magnitude / unit % 10);
        text.text[text.length++] = ' ';
    }
    return texts;
}

template <class Byte> char* writeBytes(std::span<const Byte> numbers, char* out) noexcept {
    static constexpr std::array<ByteText, 256> texts = byteTexts(std::is_signed_v<Byte>);
    for (const Byte number : numbers) {
        const ByteText& text = texts[static_cast<u8>(number)];
        std::memcpy(out, &text, sizeof text);
        out += text.length;
    }
    return out;
}

template <std::integral Number> char* writeOneByOne(std::span<const Number> numbers, char* out) noexcept {
    for (const Number number : numbers) {
        const bool isNegative = number < 0;
        const u64 magnitude = isNegative ? 0 - static_cast<u64>(number) : static_cast<u64>(number);
        *out = '-';
        out += isNegative;
        out = magnitude < 100000000 ? storeShort(eightDigits(magnitude), out) : writeLarge(magnitude, out);
        *out++ = ' ';
    }
    return out;
}

// The digits of a decimal with zeros on both sides, of which some are shown. They are moved as a whole, over what does
// not matter behind them.
template <std::floating_point Real> class Layout {
public:
    Layout() noexcept { text_.fill('0'); }

    void take(detail::ShortestDecimal decimal) noexcept {
        constexpr i32 digits = static_cast<i32>(detail::RealForm<Real>::digits);
        const i32 point = digits - decimal.places; // digits before it
        const Zeros outer = place(decimal.digits);
        const i32 first = std::min(static_cast<i32>(outer.leading), point - 1);
        const i32 fraction = digits - static_cast<i32>(outer.trailing) - point;
        first_ = before + first;
        whole_ = static_cast<u32>(point - first);
        length_ = whole_ + static_cast<u32>(fraction > 0 ? fraction + 1 : 0);
    }

    char* show(char* out) const noexcept {
        constexpr std::size_t size = sizeof(Real) == sizeof(float) ? 16 : 32;
        const char* from = text_.data() + first_;
        std::memcpy(out, from, size);
        out[whole_] = '.';
        std::memcpy(out + whole_ + 1, from + whole_, size);
        return out + length_;
    }

private:
    static constexpr i32 before = 8; // zeros

    struct Zeros {
        u32 leading;
        u32 trailing;
    };
    Zeros place(u64 number) noexcept {
        constexpr u64 unit = 100000000;
        char* const text = text_.data() + before;
        const u64 lower = eightDigits(number % unit);
        if constexpr (sizeof(Real) == sizeof(float)) {
            const u64 first = number / unit;
            text[0] = static_cast<char>('0' + first);
            storeText(lower, text + 1);
            return {first != 0 ? 0 : 1 + leadingZeros(lower), trailingZeros(lower)};
        } else {
            const u64 first = number / (unit * unit);
            const u64 upper = eightDigits(number / unit - first * unit);
            text[0] = static_cast<char>('0' + first);
            storeText(upper, text + 1);
            storeText(lower, text + 9);
            const u32 leading = upper != 0 ? 1 + leadingZeros(upper) : 9 + leadingZeros(lower);
            return {first != 0 ? 0 : leading, lower != 0 ? trailingZeros(lower) : 8 + trailingZeros(upper)};
        }
    }

    std::array<char, 80> text_;
    i32 first_ = 0; // of the characters shown
    u32 whole_ = 0; // of them before the point
    u32 length_ = 0;
};

template <std::floating_point Real> char* writeOneByOne(std::span<const Real> numbers, char* out) noexcept {
    using Bits = typename detail::RealForm<Real>::Bits;
    constexpr u32 signShift = sizeof(Bits) * 8 - 1;
    std::array<Layout<Real>, groupSize> layouts;
    std::array<bool, groupSize> isShown;
    while (!numbers.empty()) {
        const auto group = numbers.first(std::min(groupSize, numbers.size()));
        for (std::size_t i = 0; i < group.size(); ++i) {
            const Bits magnitude = std::bit_cast<Bits>(group[i]) & ~(Bits(1) << signShift);
            const bool isMiddling = detail::isMiddling<Real>(magnitude);
            isShown[i] = isMiddling || magnitude == 0;
            layouts[i].take(isMiddling ? detail::shortestDecimal<Real>(magnitude) : detail::ShortestDecimal{0, 0});
        }
        for (std::size_t i = 0; i < group.size(); ++i) {
            if (isShown[i]) {
                *out = '-';
                out += std::bit_cast<Bits>(group[i]) >> signShift;
                out = layouts[i].show(out);
            } else {
                out = writeAny(group[i], out);
            }
            *out++ = ' ';
        }
        numbers = numbers.subspan(group.size());
    }
    return out;
}

#if defined(__x86_64__)
template <class Number> char* writeMostlyAvx512(std::span<const Number> numbers, char* out) noexcept {
    for (std::size_t at = 0; at < numbers.size();) {
        const ListProgress progress = writeEightsAvx512(numbers.subspan(at), out);
        at += progress.numbers;
        out = progress.end;
        const auto others = numbers.subspan(at, std::min(groupSize, numbers.size() - at));
        out = writeOneByOne(others, out);
        at += others.size();
    }
    return out;
}
#endif

} // namespace

template <class Number> char* writeNumberList(std::span<const Number> numbers, char* out) noexcept {
    if constexpr (sizeof(Number) == 1)
        return writeBytes(numbers, out);
    else {
#if defined(__x86_64__)
        if (instructionSet() == InstructionSet::Avx512)
            return writeMostlyAvx512(numbers, out);
#endif
        return writeOneByOne(numbers, out);
    }
}

template char* writeNumberList(std::span<const i8>, char*) noexcept;
template char* writeNumberList(std::span<const i16>, char*) noexcept;
template char* writeNumberList(std::span<const i32>, char*) noexcept;
template char* writeNumberList(std::span<const i64>, char*) noexcept;
template char* writeNumberList(std::span<const u8>, char*) noexcept;
template char* writeNumberList(std::span<const u16>, char*) noexcept;
template char* writeNumberList(std::span<const u32>, char*) noexcept;
template char* writeNumberList(std::span<const u64>, char*) noexcept;
template char* writeNumberList(std::span<const float>, char*) noexcept;
template char* writeNumberList(std::span<const double>, char*) noexcept;

} // namespace vor
