#include "scene/core/NumberText.h"

#include "scene/core/PlainNumber.h"

#include <charconv>
#include <cmath>
#include <fast_float/fast_float.h>
#include <limits>

namespace vor {

namespace {

std::string_view trimSpaces(std::string_view text) {
    while (!text.empty() && String::isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && String::isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

bool isWord(std::string_view text, std::string_view lowerCaseWord) {
    if (text.size() != lowerCaseWord.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (String::lower(text[i]) != lowerCaseWord[i])
            return false;
    return true;
}

// Consumes an optional sign; true for a minus.
bool takeSign(std::string_view& text) {
    const bool minus = text.starts_with('-');
    if (minus || text.starts_with('+'))
        text.remove_prefix(1);
    return minus;
}

// An unsigned number built digit by digit, with overflow detection.
struct Magnitude {
    u64 value = 0;
    bool fits = true;

    void append(unsigned base, unsigned digit) {
        if (value > (std::numeric_limits<u64>::max() - digit) / base)
            fits = false;
        else
            value = value * base + digit;
    }
};

// The value of a digit; other characters (-1) exceed every base.
unsigned digitValue(char c) { return static_cast<unsigned>(String::hexValue(c)); }

// Consumes digits of the base; false if there are none.
bool takeDigits(std::string_view& text, unsigned base, Magnitude& number) {
    std::size_t taken = 0;
    for (; taken < text.size() && digitValue(text[taken]) < base; ++taken)
        number.append(base, digitValue(text[taken]));
    text.remove_prefix(taken);
    return taken > 0;
}

/// positive-exponent ::= 'e' '+'? digit+
bool takePositiveExponent(std::string_view& text, Magnitude& number) {
    text.remove_prefix(1);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    Magnitude exponent;
    if (!takeDigits(text, 10, exponent))
        return false;
    // Twenty zeros overflow 64 bits, unless the number is 0.
    const u64 steps = !exponent.fits || exponent.value > 20 ? 20 : exponent.value;
    for (u64 i = 0; i < steps; ++i)
        number.append(10, 0);
    return true;
}

unsigned takePrefix(std::string_view& text) {
    if (text.size() < 2 || text[0] != '0')
        return 10;
    const char letter = String::lower(text[1]);
    if (letter != 'x' && letter != 'b')
        return 10;
    text.remove_prefix(2);
    return letter == 'x' ? 16 : 2;
}

/// integer ::= sign? ( '0x' hexdigit+ | '0b' digit+ | digit+ positive-exponent? ) 'u'?   within blanks
bool takeInteger(std::string_view text, String::Radix radix, Magnitude& number) {
    const unsigned base = radix == String::Radix::Auto ? takePrefix(text) : static_cast<unsigned>(radix);
    if (!takeDigits(text, base, number))
        return false;
    const bool hasExponent = base == 10 && !text.empty() && String::lower(text[0]) == 'e';
    if (hasExponent && !takePositiveExponent(text, number))
        return false;
    if (!text.empty() && String::lower(text[0]) == 'u')
        text.remove_prefix(1);
    return text.empty() && number.fits;
}

// A decimal number as written: digits * 10^exponent.
struct Decimal {
    std::string_view text; // without sign and suffix
    u64 digits = 0;
    i64 exponent = 0;
    bool exact = true; // all digits and the exponent fit the members
};

// Appends digits to `number`; returns how many.
std::size_t takeMantissa(std::string_view& text, Decimal& number) {
    std::size_t taken = 0;
    for (; taken < text.size() && String::isDigit(text[taken]); ++taken) {
        if (number.digits >= std::numeric_limits<u64>::max() / 10 - 1)
            number.exact = false;
        else
            number.digits = number.digits * 10 + static_cast<u64>(text[taken] - '0');
    }
    text.remove_prefix(taken);
    return taken;
}

/// exponent ::= 'e' sign? digit+
/// sign ::= '+' | '-'
bool takeExponent(std::string_view& text, Decimal& number) {
    text.remove_prefix(1);
    const bool minus = takeSign(text);
    Magnitude exponent;
    if (!takeDigits(text, 10, exponent))
        return false;
    if (!exponent.fits || exponent.value > 1000000)
        number.exact = false;
    else
        number.exponent += minus ? -static_cast<i64>(exponent.value) : static_cast<i64>(exponent.value);
    return true;
}

/// real ::= sign? ( decimal | 'inf' | 'nan' )   within blanks; rounded correctly
/// decimal ::= digit* ( '.' digit* )? exponent? 'f'?   with at least one digit
bool takeDecimal(std::string_view text, Decimal& number) {
    const std::string_view whole = text;
    std::size_t digits = takeMantissa(text, number);
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        const std::size_t fraction = takeMantissa(text, number);
        number.exponent -= static_cast<i64>(fraction);
        digits += fraction;
    }
    if (digits == 0)
        return false;
    if (!text.empty() && String::lower(text[0]) == 'e' && !takeExponent(text, number))
        return false;
    number.text = whole.substr(0, whole.size() - text.size());
    return text.empty() || isWord(text, "f");
}

// The bounds of Clinger's fast path: integers up to `maxInteger` and powers of ten up to `maxPower` are exact, so that
// one multiplication or division rounds once and correctly.
template <class Real> struct Exact;
template <> struct Exact<double> {
    static constexpr u64 maxInteger = u64(1) << 53;
    static constexpr i64 maxPower = 22;
    static constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
};
template <> struct Exact<float> {
    static constexpr u64 maxInteger = u64(1) << 24;
    static constexpr i64 maxPower = 10;
    static constexpr float powers[] = {1e0F, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F, 1e6F, 1e7F, 1e8F, 1e9F, 1e10F};
};

template <class Real> Real round(const Decimal& number) {
    using E = Exact<Real>;
    if (number.exact && number.digits <= E::maxInteger && std::abs(number.exponent) <= E::maxPower) {
        const Real digits = static_cast<Real>(number.digits);
        return number.exponent < 0 ? digits / E::powers[-number.exponent] : digits * E::powers[number.exponent];
    }
    Real value = 0;
    fast_float::from_chars(number.text.data(), number.text.data() + number.text.size(), value);
    return value;
}

template <class Real> bool parseRealAs(std::string_view text, Real& out) {
    Real plain;
    if (!text.empty() && takePlainNumber(text.data(), text.data() + text.size(), plain) == text.data() + text.size()) {
        out = plain;
        return true;
    }
    text = trimSpaces(text);
    const bool minus = takeSign(text);
    Decimal number;
    Real value;
    if (isWord(text, "inf"))
        value = std::numeric_limits<Real>::infinity();
    else if (isWord(text, "nan"))
        value = std::numeric_limits<Real>::quiet_NaN();
    else if (takeDecimal(text, number))
        value = round<Real>(number);
    else
        return false;
    out = minus ? -value : value;
    return true;
}

template <class Real> std::string_view writeRealAs(Real value, char* buffer) {
    if (std::isnan(value))
        return "nan";
    const char* end = std::to_chars(buffer, buffer + realTextCapacity, value).ptr;
    return {buffer, static_cast<std::size_t>(end - buffer)};
}

// Consumes leading spaces and the part up to the next one.
std::string_view takePart(std::string_view& list) {
    list.remove_prefix(std::min(list.find_first_not_of(' '), list.size()));
    const std::string_view part = list.substr(0, list.find(' '));
    list.remove_prefix(part.size());
    return part;
}

// Consumes the next part of a list separated by spaces; false if there is none. `isRead`: whether it is a number.
bool takeReal(std::string_view& list, double& number, bool& isRead) {
    while (!list.empty() && list[0] == ' ')
        list.remove_prefix(1);
    if (list.empty())
        return false;
    const char* end = list.data() + list.size();
    const char* next = takePlainNumber(list.data(), end, number);
    isRead = next && (next == end || *next == ' ');
    if (isRead)
        list = {next, end};
    else
        isRead = parseReal(takePart(list), number);
    return true;
}

// The first parts of a list as reals.
struct Reals {
    double numbers[mostReals];
    bool isRead[mostReals];
    u64 count = 0;

    // cppcheck-suppress uninitMemberVar
    Reals(std::string_view text, u64 maxCount) {
        while (count < std::min(maxCount, mostReals) && takeReal(text, numbers[count], isRead[count]))
            ++count;
    }

    // Stores those of the first `first` parts that are numbers; true if all of them are.
    bool store(u64 first, double* out) const noexcept {
        bool all = true;
        for (u64 i = 0; i < first; ++i) {
            out[i] = isRead[i] ? numbers[i] : out[i];
            all = all && isRead[i];
        }
        return all;
    }
};

} // namespace

template <class Real> Real detail::roundDecimal(u64 digits, u32 places) noexcept {
    const auto rounded =
        fast_float::compute_float<fast_float::binary_format<Real>>(-static_cast<std::int64_t>(places), digits);
    Real number = 0;
    fast_float::to_float(false, rounded, number);
    return number;
}
template float detail::roundDecimal(u64, u32) noexcept;
template double detail::roundDecimal(u64, u32) noexcept;

bool parseBool(std::string_view text, bool& out) {
    text = trimSpaces(text);
    const bool yes = text == "1" || isWord(text, "true");
    if (!yes && text != "0" && !isWord(text, "false"))
        return false;
    out = yes;
    return true;
}

template <class Integer> bool parseInteger(std::string_view text, Integer& out, String::Radix radix) {
    using Limits = std::numeric_limits<Integer>;
    Integer plain;
    const char* end = text.data() + text.size();
    if (radix == String::Radix::Auto && !text.empty() && takePlainNumber(text.data(), end, plain) == end) {
        out = plain;
        return true;
    }
    text = trimSpaces(text);
    const bool minus = takeSign(text);
    Magnitude number;
    if ((minus && !Limits::is_signed) || !takeInteger(text, radix, number))
        return false;
    if (number.value > static_cast<u64>(Limits::max()) + (minus ? 1 : 0))
        return false;
    out = static_cast<Integer>(minus ? 0 - number.value : number.value);
    return true;
}

template bool parseInteger(std::string_view, i8&, String::Radix);
template bool parseInteger(std::string_view, i16&, String::Radix);
template bool parseInteger(std::string_view, i32&, String::Radix);
template bool parseInteger(std::string_view, long&, String::Radix);
template bool parseInteger(std::string_view, long long&, String::Radix);
template bool parseInteger(std::string_view, u8&, String::Radix);
template bool parseInteger(std::string_view, u16&, String::Radix);
template bool parseInteger(std::string_view, u32&, String::Radix);
template bool parseInteger(std::string_view, unsigned long&, String::Radix);
template bool parseInteger(std::string_view, unsigned long long&, String::Radix);

bool parseReal(std::string_view text, float& out) { return parseRealAs(text, out); }
bool parseReal(std::string_view text, double& out) { return parseRealAs(text, out); }

bool parseReals(std::string_view text, u64 count, double* out) {
    const Reals reals(text, count);
    return reals.count == count && reals.store(count, out);
}

bool parseColourReals(std::string_view text, double* out) {
    const Reals reals(text, 4);
    if (reals.count < 3)
        return false;
    const bool areAllRead = reals.store(reals.count, out);
    if (areAllRead && reals.count == 4)
        return true;
    if (!reals.store(3, out))
        return false;
    out[3] = 1;
    return true;
}

std::string_view writeReal(float value, char (&buffer)[realTextCapacity]) { return writeRealAs(value, buffer); }
std::string_view writeReal(double value, char (&buffer)[realTextCapacity]) { return writeRealAs(value, buffer); }

} // namespace vor
