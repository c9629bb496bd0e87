// Simple and slow reference parsers of numbers.
#pragma once

#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>

namespace vrn::fuzz::slow {

inline std::string trimmed(std::string text) {
    const auto isBlank = [](char c) { return c == ' ' || (c >= 9 && c <= 13); };
    while (!text.empty() && isBlank(text.front()))
        text.erase(0, 1);
    while (!text.empty() && isBlank(text.back()))
        text.pop_back();
    return text;
}

inline std::string small(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c + 32);
    return text;
}

// Removes the leading digits of a radix and returns them.
inline std::string takeDigits(std::string& text, int radix) {
    std::size_t count = 0;
    const std::string digits = std::string("0123456789abcdef").substr(0, static_cast<std::size_t>(radix));
    while (count < text.size() && digits.find(text[count]) != std::string::npos)
        ++count;
    const std::string taken = text.substr(0, count);
    text.erase(0, count);
    return taken;
}

// The characters of the numbers in a list, and those that separate them. Others cannot occur in a list.
inline bool isNumberCharacter(char c) {
    return std::string("+-.0123456789ABCDEFINUabcdefinu").find(c) != std::string::npos;
}
inline bool isSeparator(char c) {
    const bool isControl = static_cast<unsigned char>(c) < 32 || static_cast<unsigned char>(c) >= 127;
    return c != '\xFF' && (isControl || std::string(" ()[]{},").find(c) != std::string::npos);
}

// `true`, `false`, `1` or `0`.
inline std::optional<bool> boolean(const std::string& original) {
    const std::string text = small(trimmed(original));
    if (text == "true" || text == "1")
        return true;
    return text == "false" || text == "0" ? std::optional<bool>(false) : std::nullopt;
}

// An optional sign, an optional prefix, digits, an optional non-negative exponent if decimal, and an optional `u`.
template <class Integer> std::optional<Integer> integer(const std::string& original) {
    __extension__ using Wide = __int128;
    std::string text = small(trimmed(original));
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.erase(0, 1);
    const int radix = text.starts_with("0x") ? 16 : text.starts_with("0b") ? 2 : 10;
    if (radix != 10)
        text.erase(0, 2);
    const std::string digits = takeDigits(text, radix);
    if (digits.empty() || (isNegative && !std::is_signed_v<Integer>))
        return {};
    constexpr Wide large = Wide(1) << 80; // beyond all types
    Wide value = 0;
    for (const char c : digits)
        value = value > large ? large : value * radix + (c <= '9' ? c - '0' : c - 'a' + 10);
    if (radix == 10 && text.starts_with('e')) {
        text.erase(0, text.starts_with("e+") ? 2 : 1);
        const std::string exponent = takeDigits(text, 10);
        if (exponent.empty())
            return {};
        long times = 0;
        for (const char c : exponent)
            times = times > 1000 ? times : times * 10 + (c - '0');
        for (; times > 0 && value != 0; --times)
            value = value > large ? large : value * 10;
    }
    if (text == "u")
        text.clear();
    value = isNegative ? -value : value;
    if (!text.empty() || value < Wide(std::numeric_limits<Integer>::min()) ||
        value > Wide(std::numeric_limits<Integer>::max()))
        return {};
    return static_cast<Integer>(value);
}

// An optional sign, and `inf`, `nan` or digits with an optional point, exponent and `f`; rounded by the C library.
template <class Real> std::optional<Real> real(const std::string& original) {
    std::string text = small(trimmed(original));
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.erase(0, 1);
    std::string number = text;
    if (text != "inf" && text != "nan") {
        const bool hasWhole = !takeDigits(text, 10).empty();
        if (text.starts_with('.'))
            text.erase(0, 1);
        if (takeDigits(text, 10).empty() && !hasWhole)
            return {};
        if (text.starts_with('e')) {
            text.erase(0, 1);
            if (text.starts_with('+') || text.starts_with('-'))
                text.erase(0, 1);
            if (takeDigits(text, 10).empty())
                return {};
        }
        number.resize(number.size() - text.size());
        if (!text.empty() && text != "f")
            return {};
    }
    Real value;
    if constexpr (sizeof(Real) == sizeof(float))
        value = std::strtof(number.c_str(), nullptr);
    else
        value = std::strtod(number.c_str(), nullptr);
    return isNegative ? -value : value;
}

template <class Number> std::optional<Number> number(const std::string& text) {
    if constexpr (std::is_floating_point_v<Number>)
        return real<Number>(text);
    else
        return integer<Number>(text);
}

} // namespace vrn::fuzz::slow
