#include "scene/core/String.h"

#include "scene/core/NumberText.h"
#include "scene/core/Utf8.h"

#include <charconv>
#include <cstdio>
#include <new>
#include <string>

namespace vor {

namespace {

bool equalNoCase(std::string_view a, std::string_view b) noexcept {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (String::lower(a[i]) != String::lower(b[i]))
            return false;
    return true;
}

bool equal(std::string_view a, std::string_view b, bool ignoreCase) noexcept {
    return ignoreCase ? equalNoCase(a, b) : a == b;
}

template <class InSet> std::string_view strip(std::string_view text, bool leading, bool trailing, InSet inSet) {
    while (leading && !text.empty() && inSet(text.front(), true))
        text.remove_prefix(1);
    while (trailing && !text.empty() && inSet(text.back(), false))
        text.remove_suffix(1);
    return text;
}

// The value of `count` hexadecimal digits at the start of `text`, or -1.
int parseHexDigits(std::string_view text, std::size_t count) noexcept {
    if (text.size() < count)
        return -1;
    int value = 0;
    for (const char c : text.substr(0, count)) {
        if (String::hexValue(c) < 0)
            return -1;
        value = value * 16 + String::hexValue(c);
    }
    return value;
}

bool isHighSurrogate(int unit) noexcept { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(int unit) noexcept { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Appends the character of the \u escape at the start of `text`. Returns the length of the escape; 0 if it is
// malformed, a NUL or a lone surrogate.
std::size_t unicodeEscape(std::string_view text, std::string& out) {
    const int unit = parseHexDigits(text.substr(2), 4);
    if (unit <= 0 || isLowSurrogate(unit))
        return 0;
    if (!isHighSurrogate(unit)) {
        appendUtf8(out, static_cast<char32_t>(unit));
        return 6;
    }
    const std::string_view next = text.substr(6);
    const int low = next.starts_with("\\u") ? parseHexDigits(next.substr(2), 4) : -1;
    if (!isLowSurrogate(low))
        return 0;
    appendUtf8(out, static_cast<char32_t>(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00)));
    return 12;
}

std::size_t byteEscape(std::string_view text, std::string& out) {
    const int value = parseHexDigits(text.substr(2), 2);
    if (value <= 0)
        return 0;
    out += static_cast<char>(value);
    return 4;
}

/// escape ::= '\' ( 'n' | 't' | 'r' | 'a' | 'b' | 'f' | 'v' | '\' | '"' | "'" | 'x' hex2 | 'u' hex2 hex2 )
/// hex2 ::= hexdigit hexdigit   a byte, or half a code point; two `\u` make a surrogate pair
//
// `text` begins with a backslash and one more character. Returns the length of the escape, 0 for one to be kept as
// written: any other backslash, a NUL, a lone surrogate.
std::size_t escape(std::string_view text, std::string& out) {
    constexpr std::string_view letters = "ntrabfv\\\"'";
    constexpr std::string_view characters = "\n\t\r\a\b\f\v\\\"'";
    if (text[1] == 'u')
        return unicodeEscape(text, out);
    if (text[1] == 'x')
        return byteEscape(text, out);
    const std::size_t which = letters.find(text[1]);
    if (which == std::string_view::npos)
        return 0;
    out += characters[which];
    return 2;
}

} // namespace

String::String(const char* text) : String(text ? std::string_view(text) : std::string_view()) {}

String::String(u64 number) : String() {
    char digits[20];
    const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    *this = String(digits, static_cast<std::size_t>(end - digits));
}

// Makes this a handle to `length` bytes, which the caller fills. It must not hold a reference yet.
char* String::allocate(std::size_t length) {
    if (length <= inlineCapacity) {
        handle_ = Handle{0, 0};
        bytes()[inlineCapacity] = static_cast<char>(inlineCapacity - length);
        return bytes();
    }
    void* block = std::malloc(sizeof(Header) + length + 1);
    if (!block)
        throw std::bad_alloc();
    new (block) Header{length, 1};
    handle_ = Handle{0, 0};
    std::memcpy(bytes(), &block, sizeof block);
    bytes()[inlineCapacity] = sharedTag;
    char* text = shared() + sizeof(Header);
    text[length] = '\0';
    return text;
}

void String::setShared(std::string_view text) { text.copy(allocate(text.size()), text.size()); }

template <class Fill> String String::build(std::size_t length, Fill fill) {
    String result;
    fill(result.allocate(length));
    return result;
}

String String::concat(std::string_view a, std::string_view b) {
    return build(a.size() + b.size(), [&](char* out) {
        a.copy(out, a.size());
        b.copy(out + a.size(), b.size());
    });
}

int String::compareNoCase(std::string_view other) const noexcept {
    const std::string_view text = view();
    for (std::size_t i = 0; i < text.size() && i < other.size(); ++i)
        if (const int order = static_cast<u8>(lower(text[i])) - static_cast<u8>(lower(other[i])))
            return order;
    return text.size() == other.size() ? 0 : text.size() < other.size() ? -1 : 1;
}

bool String::contains(std::string_view part, bool ignoreCase) const noexcept {
    if (!ignoreCase)
        return view().find(part) != std::string_view::npos;
    for (std::size_t at = 0; at + part.size() <= len(); ++at)
        if (equalNoCase(view().substr(at, part.size()), part))
            return true;
    return false;
}

bool String::startsWith(std::string_view part, bool ignoreCase) const noexcept {
    return equal(view().substr(0, part.size()), part, ignoreCase);
}

bool String::endsWith(std::string_view part, bool ignoreCase) const noexcept {
    return part.size() <= len() && equal(view().substr(len() - part.size()), part, ignoreCase);
}

i64 String::find(char c, bool ignoreCase, std::size_t from) const noexcept {
    const std::string_view text = view();
    for (std::size_t i = from; i < text.size(); ++i)
        if (text[i] == c || (ignoreCase && lower(text[i]) == lower(c)))
            return static_cast<i64>(i);
    return -1;
}

String String::fromFirst(char c, bool include) const {
    const i64 at = find(c);
    return at < 0 ? String() : String(view().substr(static_cast<std::size_t>(at) + (include ? 0 : 1)));
}

String String::substring(std::size_t start, std::size_t length) const {
    return start < len() ? String(view().substr(start, length)) : String();
}

String String::trim(bool leading, bool trailing) const {
    return strip(view(), leading, trailing, [](char c, bool) { return isSpace(c); });
}

String String::trimChars(std::string_view leading, std::string_view trailing) const {
    const std::string_view atEnd = trailing.empty() ? leading : trailing;
    return strip(view(), true, true,
                 [&](char c, bool front) { return (front ? leading : atEnd).find(c) != std::string_view::npos; });
}

String String::toLower(bool firstOnly) const {
    return build(len(), [&](char* out) {
        for (std::size_t i = 0; i < len(); ++i)
            out[i] = i == 0 || !firstOnly ? lower(buf()[i]) : buf()[i];
    });
}

StringVector String::split(char separator, bool skipEmpty, bool trimParts) const {
    StringVector parts;
    std::string_view rest = view();
    for (bool more = true; more;) {
        const std::size_t at = rest.find(separator);
        more = at != std::string_view::npos;
        String part(rest.substr(0, at));
        rest.remove_prefix(more ? at + 1 : rest.size());
        if (trimParts)
            part = part.trim();
        if (!skipEmpty || !part.isEmpty())
            parts.push(std::move(part));
    }
    return parts;
}

String String::unescape() const {
    if (find('\\') < 0)
        return *this;
    std::string out;
    out.reserve(len());
    for (std::string_view rest = view(); !rest.empty();) {
        std::size_t consumed = 0;
        if (rest[0] == '\\' && rest.size() > 1) {
            consumed = escape(rest, out);
            if (consumed == 0) {
                consumed = 2;
                out += rest.substr(0, consumed);
            }
        } else {
            consumed = 1;
            out += rest[0];
        }
        rest.remove_prefix(consumed);
    }
    return std::string_view(out);
}

u64 String::hash() const noexcept {
    u64 hash = 0xCBF29CE484222325; // FNV offset basis and prime
    for (const char c : view())
        hash = (hash ^ static_cast<u8>(c)) * 0x100000001B3;
    return hash;
}

String String::format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    String result;
    try {
        result = formatv(format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return result;
}

String String::formatv(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    char small[256];
    const int length = std::vsnprintf(small, sizeof small, format, arguments);
    std::string large;
    if (length >= static_cast<int>(sizeof small)) {
        try {
            large.resize(static_cast<std::size_t>(length));
        } catch (...) {
            va_end(again);
            throw;
        }
        std::vsnprintf(large.data(), large.size() + 1, format, again);
    }
    va_end(again);
    if (length < 0)
        return "(a text of more than 2 GiB)"; // printf returns an int
    return large.empty() ? String(small, static_cast<std::size_t>(length)) : String(std::string_view(large));
}

bool String::parse(std::string_view text, bool& out) { return parseBool(text, out); }
bool String::parse(std::string_view text, float& out) { return parseReal(text, out); }
bool String::parse(std::string_view text, double& out) { return parseReal(text, out); }
bool String::parse(std::string_view text, i8& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, i16& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, i32& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, long& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, long long& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, u8& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, u16& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, u32& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, unsigned long& out, Radix radix) { return parseInteger(text, out, radix); }
bool String::parse(std::string_view text, unsigned long long& out, Radix radix) {
    return parseInteger(text, out, radix);
}

bool String::parseColour(std::string_view text, double* out) { return parseColourReals(text, out); }

bool String::parseComponents(std::string_view text, u64 count, double* out) { return parseReals(text, count, out); }

} // namespace vor
