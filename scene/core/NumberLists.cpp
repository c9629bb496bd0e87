#include "scene/core/NumberLists.h"

#include "scene/core/DecimalArithmetic.h"
#include "scene/core/InstructionSet.h"
#include "scene/core/NumberListGroups.h"
#include "scene/core/NumberText.h"
#include "scene/core/PlainNumber.h"
#include "scene/core/ShortestDecimal.h"
#include "scene/core/Vector128.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace vor {

namespace {

using detail::reciprocal;
using detail::tenToThe;

static_assert(listNumberCapacity == 1 + realTextCapacity + 1, "a sign before a NaN, the text of a real, a space");

// Reals are converted in two passes over groups of this size. The digits are stored byte by byte and reloaded as words;
// immediately after the stores, that would stall for lack of store forwarding.
constexpr std::size_t groupSize = 16;

// The digits of a number below 10^8, one byte each, the first digit lowest. Splits all lanes in halves three times; the
// masks clear what the products of the higher lanes shift into the lower ones.
u64 eightDigits(u64 number) noexcept {
    const u64 upper = (number * reciprocal<10000, 40, tenToThe(8)>()) >> 40;
    const u64 halves = upper | (number - 10000 * upper) << 32;
    const u64 hundreds = ((halves * reciprocal<100, 20, 10000>()) >> 20) & 0x0000007F0000007F;
    const u64 pairs = hundreds | (halves - 100 * hundreds) << 16;
    const u64 tens = ((pairs * reciprocal<10, 10, 100>()) >> 10) & 0x000F000F000F000F;
    return tens | (pairs - 10 * tens) << 8;
}

void storeDigits(u64 digits, char* to) noexcept {
    digits += detail::eightZeros;
    if constexpr (std::endian::native == std::endian::big)
        digits = __builtin_bswap64(digits);
    std::memcpy(to, &digits, sizeof digits);
}

// How many of eight digits are zeros at the start and at the end, up to 8.
u32 leadingZeros(u64 digits) noexcept { return static_cast<u32>(std::countr_zero(digits)) / 8; }
u32 trailingZeros(u64 digits) noexcept { return static_cast<u32>(std::countl_zero(digits)) / 8; }

// Without leading zeros, but at least one digit.
char* storeWithoutLeadingZeros(u64 digits, char* out) noexcept {
    const u32 skipped = std::min(leadingZeros(digits), 7U);
    storeDigits(digits >> (8 * skipped), out);
    return out + 8 - skipped;
}

// Writes a number of more than eight digits.
char* writeLarge(u64 number, char* out) noexcept {
    constexpr u64 unit = tenToThe(8);
    const u64 upper = number / unit;
    if (upper >= unit) {
        out = storeWithoutLeadingZeros(eightDigits(upper / unit), out);
        storeDigits(eightDigits(upper % unit), out);
        out += 8;
    } else {
        out = storeWithoutLeadingZeros(eightDigits(upper), out);
    }
    storeDigits(eightDigits(number % unit), out);
    return out + 8;
}

// The general path, for any real.
char* writeGeneral(std::floating_point auto number, char* out) noexcept {
    char buffer[realTextCapacity];
    const std::string_view text = writeReal(number, buffer);
    if (std::isnan(number) && std::signbit(number))
        *out++ = '-';
    return std::copy(text.begin(), text.end(), out);
}

// The texts of all numbers of one byte. The size of an entry is a power of two, so that it is copied as one word.
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

template <std::integral Number> char* writeListBaseline(std::span<const Number> numbers, char* out) noexcept {
    for (const Number number : numbers) {
        const bool isNegative = number < 0;
        const u64 magnitude = isNegative ? 0 - static_cast<u64>(number) : static_cast<u64>(number);
        *out = '-';
        out += isNegative;
        out = magnitude < tenToThe(8) ? storeWithoutLeadingZeros(eightDigits(magnitude), out)
                                      : writeLarge(magnitude, out);
        *out++ = ' ';
    }
    return out;
}

// The text of a decimal: all digits that the type may have, padded with zeros on both sides, and the range of them that
// is visible. Copies have a fixed size and overwrite what follows.
template <std::floating_point Real> class DecimalText {
public:
    DecimalText() noexcept { text_.fill('0'); }

    void set(detail::ShortestDecimal decimal) noexcept {
        constexpr i32 digits = static_cast<i32>(detail::RealForm<Real>::digits);
        const i32 point = digits - decimal.places; // digits before the point; negative for leading zeros after it
        const Zeros outer = setDigits(decimal.digits);
        const i32 first = std::min(static_cast<i32>(outer.leading), point - 1);
        const i32 fraction = digits - static_cast<i32>(outer.trailing) - point;
        first_ = padding + first;
        whole_ = static_cast<u32>(point - first);
        length_ = whole_ + static_cast<u32>(fraction > 0 ? fraction + 1 : 0);
    }

    // Writes the digits twice: up to the point, and one position to the right from the point on.
    char* write(char* out) const noexcept {
        const char* from = text_.data() + first_;
        std::memcpy(out, from, copySize);
        out[whole_] = '.';
        std::memcpy(out + whole_ + 1, from + whole_, copySize);
        return out + length_;
    }

private:
    // The visible digits start at most one before the point, with up to maxPlaces after it.
    static constexpr i32 padding = 8;
    static constexpr i32 maxPlaces =
        -detail::log10OfThreeQuarters(detail::minFastExponent - detail::RealForm<Real>::mantissaBits);
    static constexpr std::size_t copySize = sizeof(Real) == sizeof(float) ? 16 : 32;
    static constexpr std::size_t textSize = 80;
    static_assert(padding + static_cast<i32>(detail::RealForm<Real>::digits) - maxPlaces - 1 >= 0);
    static_assert(textSize >= padding + detail::RealForm<Real>::digits + copySize);
    static_assert(copySize > maxPlaces);

    struct Zeros {
        u32 leading;
        u32 trailing;
    };
    Zeros setDigits(u64 number) noexcept {
        constexpr u64 unit = tenToThe(8);
        char* const text = text_.data() + padding;
        const u64 lower = eightDigits(number % unit);
        if constexpr (sizeof(Real) == sizeof(float)) {
            const u64 first = number / unit;
            text[0] = static_cast<char>('0' + first);
            storeDigits(lower, text + 1);
            return {first != 0 ? 0 : 1 + leadingZeros(lower), trailingZeros(lower)};
        } else {
            const u64 first = number / (unit * unit);
            const u64 upper = eightDigits(number / unit - first * unit);
            text[0] = static_cast<char>('0' + first);
            storeDigits(upper, text + 1);
            storeDigits(lower, text + 9);
            const u32 leading = upper != 0 ? 1 + leadingZeros(upper) : 9 + leadingZeros(lower);
            return {first != 0 ? 0 : leading, lower != 0 ? trailingZeros(lower) : 8 + trailingZeros(upper)};
        }
    }

    std::array<char, textSize> text_;
    i32 first_ = 0;  // index of the first visible digit
    u32 whole_ = 0;  // visible digits before the point
    u32 length_ = 0; // visible characters, including the point if there is one
};

template <std::floating_point Real> char* writeListBaseline(std::span<const Real> numbers, char* out) noexcept {
    using Bits = typename detail::RealForm<Real>::Bits;
    constexpr u32 signShift = sizeof(Bits) * 8 - 1;
    std::array<DecimalText<Real>, groupSize> texts;
    std::array<bool, groupSize> isFast;
    while (!numbers.empty()) {
        const auto group = numbers.first(std::min(groupSize, numbers.size()));
        for (std::size_t i = 0; i < group.size(); ++i) {
            const Bits magnitude = std::bit_cast<Bits>(group[i]) & ~(Bits(1) << signShift);
            const bool isInRange = detail::isInFastRange<Real>(magnitude);
            isFast[i] = isInRange || magnitude == 0;
            texts[i].set(isInRange ? detail::shortestDecimal<Real>(magnitude) : detail::ShortestDecimal{0, 0});
        }
        for (std::size_t i = 0; i < group.size(); ++i) {
            if (isFast[i]) {
                *out = '-';
                out += std::bit_cast<Bits>(group[i]) >> signShift;
                out = texts[i].write(out);
            } else {
                out = writeGeneral(group[i], out);
            }
            *out++ = ' ';
        }
        numbers = numbers.subspan(group.size());
    }
    return out;
}

// Writes groups with vector instructions, and a group of its own wherever these stop.
template <class Number, class WriteGroups>
char* writeListVectorised(std::span<const Number> numbers, char* out, WriteGroups writeGroups) noexcept {
    for (std::size_t at = 0; at < numbers.size();) {
        const ListProgress progress = writeGroups(numbers.subspan(at), out);
        at += progress.numbers;
        out = progress.end;
        const auto group = numbers.subspan(at, std::min(groupSize, numbers.size() - at));
        out = writeListBaseline(group, out);
        at += group.size();
    }
    return out;
}

} // namespace

template <class Number> char* writeNumberList(std::span<const Number> numbers, char* out) noexcept {
    if constexpr (sizeof(Number) == 1)
        return writeBytes(numbers, out);
    else {
#if defined(__x86_64__)
        if (instructionSet() == InstructionSet::Avx512)
            return writeListVectorised(numbers, out, writeGroupsAvx512<Number>);
#endif
#if defined(VRN_HAS_VECTOR128)
        // Doubles do not gain from vectors of this size.
        if constexpr (!std::is_same_v<Number, double>)
            if (instructionSet() >= InstructionSet::Vector128)
                return writeListVectorised(numbers, out, writeGroups128<Number>);
#endif
        return writeListBaseline(numbers, out);
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
