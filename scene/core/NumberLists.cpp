// Vectors are handed around in functions that are part of their callers.
#pragma GCC diagnostic ignored "-Wpsabi"

#include "scene/core/NumberLists.h"

#include "scene/core/InstructionSet.h"
#include "scene/core/NumberText.h"
#include "scene/core/ShortestDecimal.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>

namespace vor {

namespace {

using detail::all;
using detail::Lanes;
using detail::select;

// Numbers are worked on in groups: what has just been written in pieces could not be read back as a whole without
// waiting, and several may be worked on with one instruction.
constexpr std::size_t groupSize = 16;
using Words = std::array<u64, groupSize>;

// Does something with all words of a group, one at a time or several.
template <class Word, class Do> [[gnu::always_inline]] inline void forEachWord(Do work) noexcept {
    for (std::size_t i = 0; i < groupSize; i += sizeof(Word) / 8)
        work(i);
}
template <class Word> [[gnu::always_inline]] inline Word load(const Words& words, std::size_t i) noexcept {
    Word word;
    std::memcpy(&word, &words[i], sizeof word);
    return word;
}
template <class Word> [[gnu::always_inline]] inline void store(Word word, void* words) noexcept {
    std::memcpy(words, &word, sizeof word);
}

// The digits of a number below 10^8, a byte each, the first one lowest. Divisions are multiplications, exact for these
// numbers.
template <class Word> [[gnu::always_inline]] inline Word eightDigits(Word number) noexcept {
    const Word upper = (number * 109951163) >> 40; // by 10000
    const Word halves = upper | (number - 10000 * upper) << 32;
    const Word hundreds = ((halves * 10486) >> 20) & 0x0000007F0000007F;
    const Word pairs = hundreds | (halves - 100 * hundreds) << 16;
    const Word tens = ((pairs * 103) >> 10) & 0x000F000F000F000F;
    return tens | (pairs - 10 * tens) << 8;
}

constexpr u64 zeros = 0x3030303030303030;

void storeText(u64 digits, char* to) noexcept {
    digits += zeros;
    if constexpr (std::endian::native == std::endian::big)
        digits = __builtin_bswap64(digits);
    store(digits, to);
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

template <class Byte> char* writeBytes(std::span<const Byte> numbers, char* out, ListEnds ends) noexcept {
    static constexpr std::array<ByteText, 256> texts = byteTexts(std::is_signed_v<Byte>);
    const char* const start = out;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const ByteText& text = texts[static_cast<u8>(numbers[i])];
        std::memcpy(out, &text, sizeof text);
        out += text.length;
        ends[i] = static_cast<u32>(out - start);
    }
    return out;
}

// A group of integers below 10^8, taken apart.
struct Integers {
    Words magnitude;
    Words digits;

    template <class Word> [[gnu::always_inline]] inline void takeApart() noexcept {
        forEachWord<Word>([this](std::size_t i) { store(eightDigits(load<Word>(magnitude, i)), &digits[i]); });
    }
};

template <class Word, std::integral Number>
[[gnu::always_inline]] inline char* writeGroup(const Number* numbers, std::size_t count, char* out, const char* start,
                                               u32* ends) noexcept {
    Integers group;
    constexpr u64 isSigned = std::is_signed_v<Number> ? 1 : 0;
    u64 isNegative[groupSize];
    u64 largest = 0;
    for (std::size_t i = 0; i < groupSize; ++i) {
        const u64 number = static_cast<u64>(numbers[i]);
        isNegative[i] = (number >> 63) & isSigned;
        group.magnitude[i] = (number ^ (0 - isNegative[i])) + isNegative[i];
        largest |= group.magnitude[i];
    }
    const bool isAnyLarge = largest >= u64(1) << 26; // as 10^8 is
    group.takeApart<Word>();
    for (std::size_t i = 0; i < count; ++i) {
        *out = '-';
        out += isNegative[i];
        const bool isLarge = isAnyLarge && group.magnitude[i] >= 100000000;
        out = isLarge ? writeLarge(group.magnitude[i], out) : storeShort(group.digits[i], out);
        *out++ = ' ';
        ends[i] = static_cast<u32>(out - start);
    }
    return out;
}

// The decimals of a group of real numbers, taken apart.
template <std::floating_point Real> struct Decimals;

template <> struct Decimals<float> {
    Words magnitude; // the bits without the sign
    Words isShown;   // or has to be written the long way
    Words exponent;
    Words first; // of the nine digits
    Words eight;

    template <class Word> [[gnu::always_inline]] inline void takeApart() noexcept {
        const Word someBits = all<Word>(std::bit_cast<u32>(1.0F));
        const Word none = all<Word>(0);
        forEachWord<Word>([&](std::size_t i) {
            const Word bits = load<Word>(magnitude, i);
            const auto isGood = detail::isMiddling<float>(bits);
            const auto decimal = detail::shortestDecimal<float>(select(isGood, bits, someBits));
            const Word digits = select(isGood, decimal.digits, none);
            const Word high = (digits * 1441151881) >> 57; // by 10^8
            store(select(isGood | (bits == 0), all<Word>(1), none), &isShown[i]);
            store(select(isGood, std::bit_cast<Word>(decimal.exponent), none), &exponent[i]);
            store(high, &first[i]);
            store(eightDigits(digits - 100000000 * high), &eight[i]);
        });
    }
    void place(std::size_t i, char* text) const noexcept {
        text[0] = static_cast<char>('0' + first[i]);
        storeText(eight[i], text + 1);
    }
    [[nodiscard]] u32 leading(std::size_t i) const noexcept { return first[i] != 0 ? 0 : 1 + leadingZeros(eight[i]); }
    [[nodiscard]] u32 trailing(std::size_t i) const noexcept { return trailingZeros(eight[i]); }
};

template <> struct Decimals<double> {
    Words magnitude;
    Words isShown;
    Words exponent;
    Words first; // of the 17 digits
    Words upper; // eight of the others
    Words lower;

    template <class Word> [[gnu::always_inline]] inline void takeApart() noexcept {
        for (std::size_t i = 0; i < groupSize; ++i) {
            const bool isGood = detail::isMiddling<double>(magnitude[i]);
            const auto decimal = detail::shortestDecimal<double>(isGood ? magnitude[i] : std::bit_cast<u64>(1.0));
            const u64 digits = isGood ? decimal.digits : 0;
            isShown[i] = isGood || magnitude[i] == 0;
            exponent[i] = isGood ? static_cast<u64>(decimal.exponent) : 0;
            const u64 high = digits / 100000000;
            first[i] = high / 100000000;
            upper[i] = high % 100000000;
            lower[i] = digits % 100000000;
        }
        forEachWord<Word>([this](std::size_t i) {
            store(eightDigits(load<Word>(upper, i)), &upper[i]);
            store(eightDigits(load<Word>(lower, i)), &lower[i]);
        });
    }
    void place(std::size_t i, char* text) const noexcept {
        text[0] = static_cast<char>('0' + first[i]);
        storeText(upper[i], text + 1);
        storeText(lower[i], text + 9);
    }
    [[nodiscard]] u32 leading(std::size_t i) const noexcept {
        if (first[i] != 0)
            return 0;
        return upper[i] != 0 ? 1 + leadingZeros(upper[i]) : 9 + leadingZeros(lower[i]);
    }
    [[nodiscard]] u32 trailing(std::size_t i) const noexcept {
        return lower[i] != 0 ? trailingZeros(lower[i]) : 8 + trailingZeros(upper[i]);
    }
};

// The digits of a decimal with zeros on both sides, of which some are shown. They are moved as a whole, over what does
// not matter behind them.
template <std::floating_point Real> class Layout {
public:
    Layout() noexcept { text_.fill('0'); }

    void take(const Decimals<Real>& decimals, std::size_t i) noexcept {
        decimals.place(i, text_.data() + before);
        constexpr i32 digits = static_cast<i32>(detail::RealForm<Real>::digits);
        const i32 point = digits + static_cast<i32>(decimals.exponent[i]); // digits before it
        const i32 first = std::min(static_cast<i32>(decimals.leading(i)), point - 1);
        const i32 fraction = digits - static_cast<i32>(decimals.trailing(i)) - point;
        first_ = before + first;
        whole_ = static_cast<u32>(point - first);
        length_ = whole_ + static_cast<u32>(fraction > 0 ? fraction + 1 : 0);
    }

    [[gnu::always_inline]] inline char* show(char* out) const noexcept {
        constexpr std::size_t size = sizeof(Real) == sizeof(float) ? 16 : 32;
        const char* from = text_.data() + first_;
        std::memcpy(out, from, size);
        out[whole_] = '.';
        std::memcpy(out + whole_ + 1, from + whole_, size);
        return out + length_;
    }

private:
    static constexpr i32 before = 8; // zeros
    std::array<char, 80> text_;
    i32 first_ = 0; // of the characters shown
    u32 whole_ = 0; // of them before the point
    u32 length_ = 0;
};

template <class Word, std::floating_point Real>
[[gnu::always_inline]] inline char* writeGroup(const Real* numbers, std::size_t count, char* out, const char* start,
                                               u32* ends, std::array<Layout<Real>, groupSize>& layouts) noexcept {
    using Bits = typename detail::RealForm<Real>::Bits;
    constexpr u32 signShift = sizeof(Bits) * 8 - 1;
    Decimals<Real> decimals;
    for (std::size_t i = 0; i < groupSize; ++i)
        decimals.magnitude[i] = std::bit_cast<Bits>(numbers[i]) & ~(Bits(1) << signShift);
    decimals.template takeApart<Word>();
    for (std::size_t i = 0; i < groupSize; ++i)
        layouts[i].take(decimals, i);
    for (std::size_t i = 0; i < count; ++i) {
        if (decimals.isShown[i]) {
            *out = '-';
            out += std::bit_cast<Bits>(numbers[i]) >> signShift;
            out = layouts[i].show(out);
        } else {
            out = writeAny(numbers[i], out);
        }
        *out++ = ' ';
        ends[i] = static_cast<u32>(out - start);
    }
    return out;
}

template <class Word, class Number>
[[gnu::always_inline]] inline char* writeWith(std::span<const Number> numbers, char* out, ListEnds ends) noexcept {
    const char* const start = out;
    [[maybe_unused]] std::array<Layout<std::conditional_t<std::floating_point<Number>, Number, float>>, groupSize>
        layouts;
    const auto write = [&](const Number* some, std::size_t count, u32* theirEnds) {
        if constexpr (std::floating_point<Number>)
            out = writeGroup<Word>(some, count, out, start, theirEnds, layouts);
        else
            out = writeGroup<Word>(some, count, out, start, theirEnds);
    };
    std::size_t at = 0;
    for (; numbers.size() - at >= groupSize; at += groupSize)
        write(&numbers[at], groupSize, &ends[at]);
    if (at < numbers.size()) {
        std::array<Number, groupSize> last{};
        std::copy(numbers.begin() + static_cast<std::ptrdiff_t>(at), numbers.end(), last.begin());
        write(last.data(), numbers.size() - at, &ends[at]);
    }
    return out;
}

template <class Number> char* writeOneByOne(std::span<const Number> numbers, char* out, ListEnds ends) noexcept {
    return writeWith<u64>(numbers, out, ends);
}

#if defined(__x86_64__)
template <class Number>
__attribute__((target("avx2,bmi,bmi2"))) char* writeAvx2(std::span<const Number> numbers, char* out,
                                                         ListEnds ends) noexcept {
    return writeWith<Lanes>(numbers, out, ends);
}
template <class Number>
__attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,bmi,bmi2"))) char*
writeAvx512(std::span<const Number> numbers, char* out, ListEnds ends) noexcept {
    return writeWith<Lanes>(numbers, out, ends);
}
#endif

} // namespace

template <class Number> char* writeNumberList(std::span<const Number> numbers, char* out, ListEnds ends) noexcept {
    if constexpr (sizeof(Number) == 1) {
        return writeBytes(numbers, out, ends);
    } else {
#if defined(__x86_64__)
        switch (instructionSet()) {
        case InstructionSet::Avx512:
            return writeAvx512(numbers, out, ends);
        case InstructionSet::Avx2:
            return writeAvx2(numbers, out, ends);
        case InstructionSet::Baseline:
            break;
        }
#endif
        return writeOneByOne(numbers, out, ends);
    }
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
